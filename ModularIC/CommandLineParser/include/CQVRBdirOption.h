#ifndef CQVRBDIROPTION_H
#define CQVRBDIROPTION_H

#include "IQVROptions.h"

// "bdir": the base directory for bare output and log file names. Names the path
// and its directory on standard output; not otherwise checked.
class CQVRBdirOption : public IQVROptions {
public:
    CQVRBdirOption();
    unsigned int Validate(std::string value) override;

    unsigned int ValidateFilePath(const std::string& path) const;
};

#endif

#ifndef CQVRLOGOPTION_H
#define CQVRLOGOPTION_H

#include "IQVROptions.h"

// "logc": the error document's file; every failed path check answers 6.
class CQVRLogOption : public IQVROptions {
public:
    CQVRLogOption();
    unsigned int Validate(std::string value) override;

    unsigned int ValidateFilePath(const std::string& path) const;
};

#endif

#ifndef CQVRHELPOPTION_H
#define CQVRHELPOPTION_H

#include "IQVROptions.h"

// "help": a single option without a value; every value passes.
class CQVRHelpOption : public IQVROptions {
public:
    CQVRHelpOption();
    unsigned int Validate(std::string value) override;
};

#endif

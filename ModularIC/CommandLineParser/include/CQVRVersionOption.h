#ifndef CQVRVERSIONOPTION_H
#define CQVRVERSIONOPTION_H

#include "IQVROptions.h"

// "version": a single option without a value; every value passes.
class CQVRVersionOption : public IQVROptions {
public:
    CQVRVersionOption();
    unsigned int Validate(std::string value) override;
};

#endif

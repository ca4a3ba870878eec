#ifndef CQVROUTPUTENCODINGOPTION_H
#define CQVROUTPUTENCODINGOPTION_H

#include "IQVROptions.h"

// "encode": "UTF-8" or "UTF-16" (case matters); 22 otherwise.
class CQVROutputEncodingOption : public IQVROptions {
public:
    CQVROutputEncodingOption();
    unsigned int Validate(std::string value) override;

    unsigned int validateEncodingOption(const std::string& value) const;
};

#endif

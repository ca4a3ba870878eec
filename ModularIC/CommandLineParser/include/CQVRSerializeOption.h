#ifndef CQVRSERIALIZEOPTION_H
#define CQVRSERIALIZEOPTION_H

#include "IQVROptions.h"

// "serialize": "yes" or "no"; 23 for an empty value, 35 for any other.
class CQVRSerializeOption : public IQVROptions {
public:
    CQVRSerializeOption();
    unsigned int Validate(std::string value) override;
};

#endif

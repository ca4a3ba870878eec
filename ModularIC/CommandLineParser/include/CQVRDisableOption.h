#ifndef CQVRDISABLEOPTION_H
#define CQVRDISABLEOPTION_H

#include "IQVROptions.h"

// "disable": a comma-separated list of module GUIDs; 35 for the first that fails.
class CQVRDisableOption : public IQVROptions {
public:
    CQVRDisableOption();
    unsigned int Validate(std::string value) override;

    unsigned int ValidateAllGuid(const std::string& value) const;
    // 0 for 36 characters in the 8-4-4-4-12 layout of hexadecimal digits, else 35.
    unsigned int ValidateGUID(const std::string& guid) const;
    // Whether the hyphens stand exactly at the 1-based positions 9, 14, 19 and 24;
    // when not, writes "Hyphen position is not as per GUID spec" to standard output.
    bool validateHyphenPosOfGuid(const std::string& guid) const;
};

#endif

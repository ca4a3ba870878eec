#include "CQVROutputEncodingOption.h"

#include "QVRResultCodes.h"

CQVROutputEncodingOption::CQVROutputEncodingOption() : IQVROptions(false, false, true) {}

unsigned int CQVROutputEncodingOption::Validate(std::string value) { return validateEncodingOption(value); }

unsigned int CQVROutputEncodingOption::validateEncodingOption(const std::string& value) const {
    if (value == "UTF-8" || value == "UTF-16") return QVR_RESULT_SUCCESS;
    return QVR_RESULT_INVALID_ENCODING;
}

#include "CQVRSerializeOption.h"

#include "QVRResultCodes.h"

CQVRSerializeOption::CQVRSerializeOption() : IQVROptions(false, false, true) {}

unsigned int CQVRSerializeOption::Validate(std::string value) {
    if (value == "yes" || value == "no") return QVR_RESULT_SUCCESS;
    if (value.empty()) return QVR_RESULT_REQUIRES_ARGUMENT;
    return QVR_RESULT_INVALID_ARGUMENT;
}

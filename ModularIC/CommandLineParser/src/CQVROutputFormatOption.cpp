#include "CQVROutputFormatOption.h"

#include "QVRResultCodes.h"

CQVROutputFormatOption::CQVROutputFormatOption() : IQVROptions(false, false, true) {}

unsigned int CQVROutputFormatOption::Validate(std::string value) { return validateOutPutFormatOption(value); }

unsigned int CQVROutputFormatOption::validateOutPutFormatOption(const std::string& value) const {
    if (value == "XML" || value == "JSON") return QVR_RESULT_SUCCESS;
    return QVR_RESULT_INVALID_ARGUMENT;
}

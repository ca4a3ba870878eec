#include "CQVRDisableOption.h"

#include <cstdio>
#include <sstream>
#include <vector>

#include "QVRResultCodes.h"

namespace {
const std::string::size_type kGuidLength = 36;
const char kHexDigits[] = "0123456789abcdefABCDEF";
}  // namespace

CQVRDisableOption::CQVRDisableOption() : IQVROptions(false, false, true) {}

unsigned int CQVRDisableOption::Validate(std::string value) { return ValidateAllGuid(value); }

unsigned int CQVRDisableOption::ValidateAllGuid(const std::string& value) const {
    // An empty list names no module to disable, which is not a usable value.
    if (value.empty()) return QVR_RESULT_INVALID_ARGUMENT;
    std::istringstream stream(value);
    std::string guid;
    while (std::getline(stream, guid, ',')) {
        if (ValidateGUID(guid) != QVR_RESULT_SUCCESS) return QVR_RESULT_INVALID_ARGUMENT;
    }
    return QVR_RESULT_SUCCESS;
}

bool CQVRDisableOption::validateHyphenPosOfGuid(const std::string& guid) const {
    const std::vector<std::string::size_type> expected = {9, 14, 19, 24};
    std::vector<std::string::size_type> found;
    for (std::string::size_type i = 0; i < guid.size(); ++i) {
        if (guid[i] == '-') found.push_back(i + 1);
    }
    if (found == expected) return true;
    std::fputs("Hyphen position is not as per GUID spec\n", stdout);
    return false;
}

unsigned int CQVRDisableOption::ValidateGUID(const std::string& guid) const {
    if (guid.size() != kGuidLength) return QVR_RESULT_INVALID_ARGUMENT;
    if (!validateHyphenPosOfGuid(guid)) return QVR_RESULT_INVALID_ARGUMENT;
    std::istringstream stream(guid);
    std::string piece;
    while (std::getline(stream, piece, '-')) {
        if (piece.find_first_not_of(kHexDigits) != std::string::npos) return QVR_RESULT_INVALID_ARGUMENT;
    }
    return QVR_RESULT_SUCCESS;
}

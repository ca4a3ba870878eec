#include "CQVRLogOption.h"

#include "CFileUtils.h"
#include "QVRResultCodes.h"

CQVRLogOption::CQVRLogOption() : IQVROptions(false, false, true) {}

unsigned int CQVRLogOption::Validate(std::string value) { return ValidateFilePath(value); }

unsigned int CQVRLogOption::ValidateFilePath(const std::string& path) const {
    switch (CFileUtils(path).CheckWritableFile()) {
        case CFileUtils::FILE_WRITABLE:
        case CFileUtils::FILE_TO_BE_CREATED:
            return QVR_RESULT_SUCCESS;
        default:
            return QVR_RESULT_INVALID_LOG_FILE;
    }
}

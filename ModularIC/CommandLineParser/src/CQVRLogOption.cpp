#include "CQVRLogOption.h"

#include "CFileUtils.h"
#include "QVRResultCodes.h"

CQVRLogOption::CQVRLogOption(IQVRFileSystem& fileSystem)
    : IQVROptions(false, false, true), m_fileSystem(fileSystem) {}

unsigned int CQVRLogOption::Validate(std::string value) { return ValidateFilePath(value); }

unsigned int CQVRLogOption::ValidateFilePath(const std::string& path) const {
    switch (CFileUtils(path, m_fileSystem).CheckWritableFile()) {
        case CFileUtils::FILE_WRITABLE:
        case CFileUtils::FILE_TO_BE_CREATED:
            return QVR_RESULT_SUCCESS;
        default:
            return QVR_RESULT_INVALID_LOG_FILE;
    }
}

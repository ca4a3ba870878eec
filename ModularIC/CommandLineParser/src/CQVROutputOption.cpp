#include "CQVROutputOption.h"

#include "CFileUtils.h"
#include "QVRResultCodes.h"

CQVROutputOption::CQVROutputOption(IQVRFileSystem& fileSystem)
    : IQVROptions(false, false, true), m_fileSystem(fileSystem) {}

unsigned int CQVROutputOption::Validate(std::string value) { return ValidateFilePath(value); }

unsigned int CQVROutputOption::ValidateFilePath(const std::string& path) const {
    switch (CFileUtils(path, m_fileSystem).CheckWritableFile()) {
        case CFileUtils::ILLEGAL_PATH:
        case CFileUtils::DIRECTORY_MISSING:
            return QVR_RESULT_INVALID_ARGUMENT;
        case CFileUtils::LINK_DANGLING:
        case CFileUtils::DIRECTORY_NOT_WRITABLE:
        case CFileUtils::FILE_NOT_WRITABLE:
            return QVR_RESULT_INVALID_LOG_FILE;
        case CFileUtils::FILE_WRITABLE:
        case CFileUtils::FILE_TO_BE_CREATED:
            break;
    }
    return QVR_RESULT_SUCCESS;
}

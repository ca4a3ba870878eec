#include "CFileUtils.h"

#include <sys/stat.h>
#include <unistd.h>

#include "CLinkResolver.h"
#include "CLogger.h"

namespace {

class CRealFileSystem : public IQVRFileSystem {
public:
    bool IsDirectory(const std::string& path) override {
        struct stat info;
        return ::stat(path.c_str(), &info) == 0 && S_ISDIR(info.st_mode);
    }
    bool Exists(const std::string& path) override {
        struct stat info;
        return ::stat(path.c_str(), &info) == 0;
    }
    bool IsWritable(const std::string& path) override { return ::access(path.c_str(), W_OK) == 0; }
    std::string ResolveLinks(const std::string& path) override {
        std::string target;
        return CLinkResolver::Resolve(path, target) ? target : path;
    }
};

}  // namespace

IQVRFileSystem& IQVRFileSystem::Real() {
    static CRealFileSystem real;
    return real;
}

CFileUtils::CFileUtils(const std::string& path, IQVRFileSystem& fileSystem)
    : m_path(path), m_fileSystem(fileSystem), m_illegalSubstrings{"?", "*", "<", "\"", ">", "|", ","} {}

bool CFileUtils::HasValidPath() const {
    if (m_path.empty()) return false;
    for (const std::string& illegal : m_illegalSubstrings) {
        if (m_path.find(illegal) != std::string::npos) return false;
    }
    return true;
}

std::string CFileUtils::GetDirName() const {
    const std::string::size_type slash = m_path.rfind('/');
    if (slash == std::string::npos) return ".";
    if (slash == 0) return "/";
    return m_path.substr(0, slash);
}

bool CFileUtils::IsDirectoryExist(const std::string& dir) const { return m_fileSystem.IsDirectory(dir); }

bool CFileUtils::HasWritePermissionDir(const std::string& dir) const { return m_fileSystem.IsWritable(dir); }

bool CFileUtils::IsFileExists() const { return m_fileSystem.Exists(m_path); }

bool CFileUtils::HasWritePermission() const { return m_fileSystem.IsWritable(m_path); }

CFileUtils::WritableFileState CFileUtils::CheckWritableFile() const {
    CLogger* logger = CLogger::GetInstance();
    if (!HasValidPath()) {
        logger->log(__FILE__, __LINE__, "File path contains illegal character ");
        return ILLEGAL_PATH;
    }
    // A link is written through: the file it leads to is the one checked.
    std::string target = m_fileSystem.ResolveLinks(m_path);
    if (target != m_path && !m_fileSystem.Exists(m_path)) {
        logger->log(__FILE__, __LINE__, "File is a link to nothing.");
        return LINK_DANGLING;
    }
    // Links the kernel follows to no name (/dev/stdout to a pipe) are checked as given.
    if (!m_fileSystem.Exists(target)) target = m_path;
    const CFileUtils checked(target, m_fileSystem);
    const std::string dir = checked.GetDirName();
    if (!IsDirectoryExist(dir)) {
        logger->log(__FILE__, __LINE__, "Directory does not exist.");
        return DIRECTORY_MISSING;
    }
    if (!HasWritePermissionDir(dir)) {
        logger->log(__FILE__, __LINE__, "Directory does not have write permission.");
        return DIRECTORY_NOT_WRITABLE;
    }
    if (checked.IsFileExists()) {
        if (!checked.HasWritePermission()) {
            logger->log(__FILE__, __LINE__, "File does not have write permission.");
            return FILE_NOT_WRITABLE;
        }
        return FILE_WRITABLE;
    }
    logger->log(__FILE__, __LINE__, "File does not exist file has to be created  ");
    return FILE_TO_BE_CREATED;
}

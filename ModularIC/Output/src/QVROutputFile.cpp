#include "QVROutputFile.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>

#include "CLinkResolver.h"
#include "QVRTemporaryFiles.h"

namespace {

// Closes a descriptor, keeping the errno of an earlier failure.
void CloseKeepingErrno(int fd) {
    const int saved = errno;
    close(fd);
    errno = saved;
}

bool WriteFully(int fd, const char* data, std::size_t size) {
    while (size > 0) {
        const ssize_t written = write(fd, data, size);
        if (written < 0) {
            if (errno == EINTR) continue;
            return false;
        }
        data += written;
        size -= static_cast<std::size_t>(written);
    }
    return true;
}

// The mode a newly created file would have had: what the umask leaves.
mode_t NewFileMode() {
    const mode_t mask = umask(0);
    umask(mask);
    return 0666 & ~mask;
}

}  // namespace

QVROutputFile::QVROutputFile(const std::string& path)
    : m_path(path), m_target(path), m_writePath(path), m_temporary(false), m_committed(false), m_fd(-1) {}

QVROutputFile::~QVROutputFile() {
    if (m_fd >= 0) CloseKeepingErrno(m_fd);
    if (m_temporary && !m_committed) QVRTemporaryFiles::Remove(m_writePath);
}

bool QVROutputFile::Open() {
    struct stat existing;
    const bool exists = stat(m_path.c_str(), &existing) == 0;
    if (!exists && errno != ENOENT) return false;
    if (exists && !S_ISREG(existing.st_mode)) return true;  // written in place
    if (!CLinkResolver::Resolve(m_path, m_target)) return false;
    // A link to nothing names no file to replace; creating one there is not
    // what the user asked for.
    if (!exists && m_target != m_path) {
        errno = ENOENT;
        return false;
    }
    const std::string::size_type slash = m_target.rfind('/');
    const std::string directory = slash == std::string::npos ? std::string() : m_target.substr(0, slash + 1);
    const std::string base = slash == std::string::npos ? m_target : m_target.substr(slash + 1);
    std::string name = directory + "." + base + ".XXXXXX";
    m_fd = QVRTemporaryFiles::Create(name);
    if (m_fd < 0) return false;
    m_writePath = name;
    m_temporary = true;
    // The replacement is the same file to whoever used the old one.
    if (exists && (existing.st_uid != geteuid() || existing.st_gid != getegid()) &&
        fchown(m_fd, existing.st_uid, existing.st_gid) != 0)
        return false;
    return fchmod(m_fd, exists ? existing.st_mode & 07777 : NewFileMode()) == 0;
}

bool QVROutputFile::Append(const char* data, std::size_t size) {
    if (m_fd < 0) {
        if (m_temporary) {
            errno = EBADF;
            return false;
        }
        do {
            m_fd = open(m_writePath.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0666);
        } while (m_fd < 0 && errno == EINTR);
        if (m_fd < 0) return false;
    }
    return WriteFully(m_fd, data, size);
}

bool QVROutputFile::Commit() {
    if (m_temporary && m_fd >= 0 && fsync(m_fd) != 0) return false;
    if (m_fd >= 0) {
        const int fd = m_fd;
        m_fd = -1;
        // A write the kernel reports only at close is a failed write too.
        if (close(fd) != 0) return false;
    }
    if (m_temporary && !QVRTemporaryFiles::Rename(m_writePath, m_target)) return false;
    return m_committed = true;
}

bool QVRFlushStandardOutput() { return std::fflush(stdout) == 0 && !std::ferror(stdout); }

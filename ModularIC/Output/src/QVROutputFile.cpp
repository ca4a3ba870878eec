#include "QVROutputFile.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <vector>

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

}  // namespace

QVROutputFile::QVROutputFile(const std::string& path)
    : m_path(path), m_writePath(path), m_temporary(false), m_committed(false), m_appendFd(-1) {}

QVROutputFile::~QVROutputFile() {
    if (m_appendFd >= 0) CloseKeepingErrno(m_appendFd);
    if (m_temporary && !m_committed) {
        const int saved = errno;
        unlink(m_writePath.c_str());
        errno = saved;
    }
}

bool QVROutputFile::Open() {
    struct stat existing;
    if (stat(m_path.c_str(), &existing) == 0 && !S_ISREG(existing.st_mode)) return true;  // written in place
    const std::string::size_type slash = m_path.rfind('/');
    const std::string directory = slash == std::string::npos ? std::string() : m_path.substr(0, slash + 1);
    const std::string base = slash == std::string::npos ? m_path : m_path.substr(slash + 1);
    std::string pattern = directory + "." + base + ".XXXXXX";
    std::vector<char> name(pattern.begin(), pattern.end());
    name.push_back('\0');
    const int fd = mkostemp(name.data(), O_CLOEXEC);
    if (fd < 0) return false;
    // As a newly created file would have been: the permissions the umask leaves.
    const mode_t mask = umask(0);
    umask(mask);
    fchmod(fd, 0666 & ~mask);
    close(fd);
    m_writePath = name.data();
    m_temporary = true;
    return true;
}

bool QVROutputFile::Append(const char* data, std::size_t size) {
    if (m_appendFd < 0) {
        m_appendFd = open(m_writePath.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0666);
        if (m_appendFd < 0) return false;
    }
    return WriteFully(m_appendFd, data, size);
}

bool QVROutputFile::Commit() {
    if (m_appendFd >= 0) {
        const int fd = m_appendFd;
        m_appendFd = -1;
        // A write the kernel reports only at close is a failed write too.
        if (close(fd) != 0) return false;
    }
    if (!m_temporary) return m_committed = true;
    const int fd = open(m_writePath.c_str(), O_RDONLY | O_CLOEXEC);
    if (fd < 0) return false;
    if (fsync(fd) != 0) {
        CloseKeepingErrno(fd);
        return false;
    }
    close(fd);
    if (rename(m_writePath.c_str(), m_path.c_str()) != 0) return false;
    return m_committed = true;
}

bool QVRFlushStandardOutput() { return std::fflush(stdout) == 0 && !std::ferror(stdout); }

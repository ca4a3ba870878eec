#include "CLockManager.h"

#include <unistd.h>

#include <cerrno>

const char CLockManager::kLockFilePath[] = "/var/lock/sorvik.tmp";
const char CLockManager::kSetupFilePath[] = "/var/lock/.spsetup";

namespace {

class CPosixLockFileOps : public ILockFileOps {
public:
    int Open(const char* path, int flags, mode_t mode) override {
        int fd;
        do {
            fd = ::open(path, flags, mode);
        } while (fd < 0 && errno == EINTR);
        return fd;
    }
    int Lock(int fd, int command, struct flock* lock) override {
        int result;
        do {
            result = ::fcntl(fd, command, lock);
        } while (result < 0 && errno == EINTR);
        return result;
    }
    // Retrying close after EINTR could close a descriptor reused by another thread.
    int Close(int fd) override { return ::close(fd); }
    int Fstat(int fd, struct stat* info) override { return ::fstat(fd, info); }
    int Stat(const char* path, struct stat* info) override { return ::stat(path, info); }
    int Unlink(const char* path) override { return ::unlink(path); }
    pid_t GetProcessId() override { return ::getpid(); }
};

CPosixLockFileOps g_posixLockFileOps;

struct flock WholeFileRequest(short type, pid_t pid) {
    struct flock request = {};
    request.l_type = type;
    request.l_whence = SEEK_SET;
    request.l_start = 0;
    request.l_len = 0;
    request.l_pid = pid;
    return request;
}

}  // namespace

CLockManager::CLockManager(ILockFileOps* ops) : m_ops(ops != nullptr ? *ops : g_posixLockFileOps) {}

int CLockManager::ProcessLock() {
    for (int attempt = 0; attempt < kLockAttempts; ++attempt) {
        // Close-on-exec keeps modules from inheriting the lock descriptor; no-follow
        // refuses a link planted in the world-writable lock directory; non-blocking
        // keeps a planted FIFO from holding us in open.
        const int fd =
            m_ops.Open(kLockFilePath, O_WRONLY | O_CREAT | O_CLOEXEC | O_NOFOLLOW | O_NONBLOCK, 0222);
        if (fd < 0) return -1;
        struct stat locked;
        if (m_ops.Fstat(fd, &locked) != 0 || !S_ISREG(locked.st_mode)) {
            m_ops.Close(fd);
            return -1;
        }
        struct flock request = WholeFileRequest(F_WRLCK, m_ops.GetProcessId());
        if (m_ops.Lock(fd, F_SETLK, &request) < 0) {
            m_ops.Close(fd);
            return -1;
        }
        // The previous holder may have removed the file between our open and our
        // lock; a lock on a removed file excludes nobody, so start again.
        struct stat named;
        if (m_ops.Fstat(fd, &locked) == 0 && locked.st_nlink > 0 && m_ops.Stat(kLockFilePath, &named) == 0 &&
            named.st_dev == locked.st_dev && named.st_ino == locked.st_ino)
            return fd;
        m_ops.Close(fd);
    }
    return -1;
}

void CLockManager::ReleaseProcessLock(int handle) {
    // Removed while still locked: a starter that opened the file before us and
    // locks it once we let go then finds it unlinked and starts again on a new
    // one, instead of holding a lock that a third starter's new file ignores.
    m_ops.Unlink(kLockFilePath);
    struct flock request = WholeFileRequest(F_UNLCK, m_ops.GetProcessId());
    m_ops.Lock(handle, F_SETLK, &request);
    m_ops.Close(handle);
}

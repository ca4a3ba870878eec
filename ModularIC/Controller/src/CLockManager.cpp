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
    // Close-on-exec keeps modules from inheriting the lock descriptor; no-follow
    // refuses a link planted in the world-writable lock directory.
    const int fd = m_ops.Open(kLockFilePath, O_WRONLY | O_CREAT | O_CLOEXEC | O_NOFOLLOW, 0222);
    if (fd < 0) return -1;
    struct flock request = WholeFileRequest(F_WRLCK, m_ops.GetProcessId());
    if (m_ops.Lock(fd, F_SETLK, &request) < 0) {
        m_ops.Close(fd);
        return -1;
    }
    return fd;
}

void CLockManager::ReleaseProcessLock(int handle) {
    struct flock request = WholeFileRequest(F_UNLCK, m_ops.GetProcessId());
    m_ops.Lock(handle, F_SETLK, &request);
    m_ops.Close(handle);
    m_ops.Unlink(kLockFilePath);
}

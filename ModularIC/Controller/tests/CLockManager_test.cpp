#include "CLockManager.h"

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <string>

namespace {

bool LockFileExists() { return ::access(CLockManager::kLockFilePath, F_OK) == 0; }

// The outcome of one ProcessLock: 'W' for a held lock on a write-only (0222),
// close-on-exec descriptor; 'L' for a refusal that left no descriptor open.
char TryLock(CLockManager& manager, int& handle) {
    const int next = ::open("/dev/null", O_RDONLY);  // the descriptor the lock file would get
    ::close(next);
    const mode_t mask = ::umask(0);
    handle = manager.ProcessLock();
    ::umask(mask);
    struct stat info;
    if (handle < 0) return ::fcntl(next, F_GETFD) == -1 ? 'L' : 'x';
    if (::fstat(handle, &info) != 0 || (info.st_mode & 0777) != 0222) return 'm';
    return (::fcntl(handle, F_GETFD) & FD_CLOEXEC) ? 'W' : 'c';
}

// A second process, as record locks belong to a process: one process cannot
// show that another is refused.
TEST(CLockManagerTest, WhileOneProcessHoldsTheLockAnotherIsRefused) {
    ASSERT_FALSE(LockFileExists()) << "is a collection running?";
    CLockManager manager;
    int handle;
    ASSERT_EQ(TryLock(manager, handle), 'W');
    const pid_t child = ::fork();
    if (child == 0) {
        CLockManager other;
        int refused;
        ::_exit(TryLock(other, refused));
    }
    int status = -1;
    EXPECT_EQ(::waitpid(child, &status, 0), child);
    EXPECT_EQ(WEXITSTATUS(status), 'L');
    manager.ReleaseProcessLock(handle);
    EXPECT_FALSE(LockFileExists());  // released and removed
}

// Anything but a regular file at the path reads as another instance (the
// collection suite plants a FIFO and a directory): a link is not followed, and
// a FIFO that has a reader opens but is still no lock.
TEST(CLockManagerTest, PlantedLinksAndFifosWithAReaderAreRefused) {
    char target[] = "/tmp/sorvik-lock-target-XXXXXX";
    ::close(::mkstemp(target));
    const char* const path = CLockManager::kLockFilePath;
    ASSERT_EQ(::symlink(target, path), 0);
    EXPECT_EQ(CLockManager().ProcessLock(), -1);
    EXPECT_EQ(::remove(path), 0);
    ::unlink(target);
    ASSERT_EQ(::mkfifo(path, 0666), 0);
    const int reader = ::open(path, O_RDONLY | O_NONBLOCK);
    EXPECT_EQ(CLockManager().ProcessLock(), -1);
    ::close(reader);
    EXPECT_EQ(::remove(path), 0);
}

// The real calls, except that the first lock request comes just after the
// previous holder removed the file and a third run created and locked a new one.
class RacingOps : public ILockFileOps {
public:
    int Open(const char* path, int flags, mode_t mode) override { return ::open(path, flags, mode); }
    int Lock(int fd, int command, struct flock* lock) override {
        if (lock->l_type == F_UNLCK) released += "unlock ";
        if (command == F_SETLK && lock->l_type == F_WRLCK && ++locks == 1) {
            ::unlink(CLockManager::kLockFilePath);
            replacement = ::open(CLockManager::kLockFilePath, O_WRONLY | O_CREAT | O_CLOEXEC, 0222);
        }
        return ::fcntl(fd, command, lock);
    }
    int Close(int fd) override { return ::close(fd); }
    int Fstat(int fd, struct stat* info) override { return ::fstat(fd, info); }
    int Stat(const char* path, struct stat* info) override { return ::stat(path, info); }
    int Unlink(const char* path) override {
        released += "unlink ";
        return ::unlink(path);
    }
    pid_t GetProcessId() override { return ::getpid(); }
    int locks = 0;
    std::string released;
    int replacement = -1;
};

TEST(CLockManagerTest, ALockTakenOnAFileRemovedMeanwhileIsTakenAgainOnTheFileAtThePath) {
    ASSERT_FALSE(LockFileExists()) << "is a collection running?";
    RacingOps ops;
    CLockManager manager(&ops);
    const int handle = manager.ProcessLock();
    ASSERT_GE(handle, 0);
    EXPECT_EQ(ops.locks, 2);
    struct stat held, named;
    ASSERT_EQ(::fstat(handle, &held) | ::stat(CLockManager::kLockFilePath, &named), 0);
    EXPECT_EQ(held.st_ino, named.st_ino);
    manager.ReleaseProcessLock(handle);
    // Unlocked first, the file could be locked by a starter that opened it
    // earlier and still pass that starter's check before it is removed.
    EXPECT_EQ(ops.released, "unlink unlock ");
    ::close(ops.replacement);
    EXPECT_FALSE(LockFileExists());
}

}  // namespace

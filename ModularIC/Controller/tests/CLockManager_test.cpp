#include "CLockManager.h"

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <string>
#include <vector>

namespace {

// Records every call; results are set per test.
class FakeLockFileOps : public ILockFileOps {
public:
    int Open(const char* path, int flags, mode_t mode) override {
        openPath = path;
        openFlags = flags;
        openMode = mode;
        calls.push_back("open");
        if (openResult < 0) errno = EACCES;
        return openResult;
    }
    int Lock(int fd, int command, struct flock* lock) override {
        calls.push_back("lock " + std::to_string(fd) + " " + std::to_string(lock->l_type));
        lockCommand = command;
        request = *lock;
        if (lockResult < 0) errno = EAGAIN;
        return lockResult;
    }
    int Close(int fd) override {
        calls.push_back("close " + std::to_string(fd));
        return 0;
    }
    int Unlink(const char* path) override {
        calls.push_back(std::string("unlink ") + path);
        return unlinkResult;
    }
    pid_t GetProcessId() override { return 4242; }

    int openResult = 7;
    int lockResult = 0;
    int unlinkResult = 0;
    std::string openPath;
    int openFlags = 0;
    mode_t openMode = 0;
    int lockCommand = 0;
    struct flock request = {};
    std::vector<std::string> calls;
};

TEST(CLockManagerTest, LocksTheWholeFileWithoutWaiting) {
    FakeLockFileOps ops;
    CLockManager manager(&ops);
    EXPECT_EQ(manager.ProcessLock(), 7);
    EXPECT_EQ(ops.openPath, "/var/lock/sorvik.tmp");
    EXPECT_EQ(ops.openFlags, O_WRONLY | O_CREAT | O_CLOEXEC | O_NOFOLLOW);
    EXPECT_EQ(ops.openMode, 0222u);
    EXPECT_EQ(ops.lockCommand, F_SETLK);
    EXPECT_EQ(ops.request.l_type, F_WRLCK);
    EXPECT_EQ(ops.request.l_whence, SEEK_SET);
    EXPECT_EQ(ops.request.l_start, 0);
    EXPECT_EQ(ops.request.l_len, 0);
    EXPECT_EQ(ops.request.l_pid, 4242);
    EXPECT_EQ(ops.calls, (std::vector<std::string>{"open", "lock 7 " + std::to_string(F_WRLCK)}));
}

TEST(CLockManagerTest, LockHeldElsewhereClosesAndAnswersMinusOne) {
    FakeLockFileOps ops;
    ops.lockResult = -1;
    CLockManager manager(&ops);
    EXPECT_EQ(manager.ProcessLock(), -1);
    EXPECT_EQ(ops.calls.back(), "close 7");
}

TEST(CLockManagerTest, UnopenableFileReadsAsAnotherInstance) {
    FakeLockFileOps ops;
    ops.openResult = -1;
    CLockManager manager(&ops);
    EXPECT_EQ(manager.ProcessLock(), -1);
    for (const std::string& call : ops.calls) EXPECT_EQ(call.rfind("close", 0), std::string::npos);
}

TEST(CLockManagerTest, ReleaseUnlocksClosesAndRemovesInThatOrder) {
    FakeLockFileOps ops;
    ops.lockResult = -1;  // errors of the release are ignored
    ops.unlinkResult = -1;
    CLockManager manager(&ops);
    manager.ReleaseProcessLock(9);
    EXPECT_EQ(ops.calls, (std::vector<std::string>{"lock 9 " + std::to_string(F_UNLCK), "close 9",
                                                   "unlink /var/lock/sorvik.tmp"}));
    EXPECT_EQ(ops.lockCommand, F_SETLK);
    EXPECT_EQ(ops.request.l_whence, SEEK_SET);
    EXPECT_EQ(ops.request.l_len, 0);
}

bool LockFileExists() {
    struct stat info;
    return ::lstat(CLockManager::kLockFilePath, &info) == 0;
}

// Real processes: record locks belong to a process, so one process cannot
// show that a second one is refused.
TEST(CLockManagerSerial, OfTwoProcessesStartedTogetherExactlyOneWins) {
    int go[2], results[2], hold[2];
    ASSERT_EQ(::pipe(go), 0);
    ASSERT_EQ(::pipe(results), 0);
    ASSERT_EQ(::pipe(hold), 0);
    pid_t children[2];
    for (pid_t& child : children) {
        child = ::fork();
        ASSERT_GE(child, 0);
        if (child == 0) {
            ::close(go[1]);
            ::close(results[0]);
            ::close(hold[1]);
            char byte;
            while (::read(go[0], &byte, 1) < 0 && errno == EINTR) {
            }
            CLockManager manager;
            const int handle = manager.ProcessLock();
            const char outcome = handle >= 0 ? 'W' : 'L';
            if (::write(results[1], &outcome, 1) != 1) ::_exit(3);
            while (::read(hold[0], &byte, 1) < 0 && errno == EINTR) {
            }
            if (handle >= 0) manager.ReleaseProcessLock(handle);
            ::_exit(0);
        }
    }
    ::close(go[0]);
    ::close(results[1]);
    ::close(hold[0]);
    ::close(go[1]);  // both children start now

    std::string outcomes;
    char byte;
    while (outcomes.size() < 2) {
        const ssize_t count = ::read(results[0], &byte, 1);
        if (count < 0 && errno == EINTR) continue;
        if (count <= 0) break;
        outcomes += byte;
    }
    ::close(hold[1]);
    for (pid_t child : children) {
        int status = 0;
        ASSERT_EQ(::waitpid(child, &status, 0), child);
        EXPECT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 0);
    }
    ::close(results[0]);
    ASSERT_EQ(outcomes.size(), 2u);
    EXPECT_NE(outcomes.find('W'), std::string::npos) << outcomes;
    EXPECT_NE(outcomes.find('L'), std::string::npos) << outcomes;
    EXPECT_FALSE(LockFileExists());
}

TEST(CLockManagerSerial, HeldLockIsCloseOnExecAndReleaseRemovesTheFile) {
    CLockManager manager;
    const int handle = manager.ProcessLock();
    ASSERT_GE(handle, 0);
    EXPECT_TRUE(::fcntl(handle, F_GETFD) & FD_CLOEXEC);
    EXPECT_TRUE(LockFileExists());

    // A second process is refused at once.
    const pid_t child = ::fork();
    ASSERT_GE(child, 0);
    if (child == 0) {
        CLockManager other;
        ::_exit(other.ProcessLock() == -1 ? 0 : 1);
    }
    int status = 0;
    ASSERT_EQ(::waitpid(child, &status, 0), child);
    EXPECT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 0);

    manager.ReleaseProcessLock(handle);
    EXPECT_FALSE(LockFileExists());
}

TEST(CLockManagerSerial, StaleFileDoesNotBlock) {
    const int stale = ::open(CLockManager::kLockFilePath, O_WRONLY | O_CREAT | O_CLOEXEC, 0222);
    ASSERT_GE(stale, 0);
    ::close(stale);
    CLockManager manager;
    const int handle = manager.ProcessLock();
    EXPECT_GE(handle, 0);
    if (handle >= 0) manager.ReleaseProcessLock(handle);
    EXPECT_FALSE(LockFileExists());
}

TEST(CLockManagerSerial, PlantedLinkIsNotFollowed) {
    char target[] = "/tmp/sorvik-lock-target-XXXXXX";
    const int targetFd = ::mkstemp(target);
    ASSERT_GE(targetFd, 0);
    ::close(targetFd);
    ASSERT_EQ(::symlink(target, CLockManager::kLockFilePath), 0);
    CLockManager manager;
    EXPECT_EQ(manager.ProcessLock(), -1);
    ::unlink(CLockManager::kLockFilePath);
    ::unlink(target);
}

}  // namespace

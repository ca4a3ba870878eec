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
    ::umask(0);
    handle = manager.ProcessLock();
    struct stat info;
    if (handle < 0) return ::fcntl(next, F_GETFD) == -1 ? 'L' : 'x';
    if (::fstat(handle, &info) != 0 || (info.st_mode & 0777) != 0222) return 'm';
    return (::fcntl(handle, F_GETFD) & FD_CLOEXEC) ? 'W' : 'c';
}

// Real processes: record locks belong to a process, so one process cannot
// show that a second one is refused.
TEST(CLockManagerSerial, OfTwoProcessesStartedTogetherExactlyOneWinsAtOnce) {
    ASSERT_FALSE(LockFileExists()) << "is a collection running?";
    int go[2], results[2], hold[2];
    ASSERT_EQ(::pipe(go) | ::pipe(results) | ::pipe(hold), 0);
    pid_t children[2];
    for (pid_t& child : children) {
        if ((child = ::fork()) != 0) continue;
        ::close(go[1]);
        ::close(hold[1]);
        char byte;
        if (::read(go[0], &byte, 1) < 0) ::_exit(4);
        CLockManager manager;
        int handle;
        const char outcome = TryLock(manager, handle);
        if (::write(results[1], &outcome, 1) != 1) ::_exit(3);
        if (::read(hold[0], &byte, 1) < 0) ::_exit(5);  // the loser tries while the winner holds
        if (handle >= 0) manager.ReleaseProcessLock(handle);
        ::_exit(0);
    }
    for (int fd : {go[1], results[1], go[0], hold[0]}) ::close(fd);  // both children start now
    std::string outcomes(2, ' ');
    for (char& outcome : outcomes) EXPECT_EQ(::read(results[0], &outcome, 1), 1);
    ::close(hold[1]);
    for (pid_t child : children) {
        int status = -1;
        EXPECT_EQ(::waitpid(child, &status, 0), child);
        EXPECT_EQ(status, 0);
    }
    ::close(results[0]);
    EXPECT_TRUE(outcomes == "WL" || outcomes == "LW") << outcomes;
    EXPECT_FALSE(LockFileExists());  // released and removed
}

// An unopenable file reads as another instance.
TEST(CLockManagerSerial, PlantedLinkIsRefused) {
    char target[] = "/tmp/sorvik-lock-target-XXXXXX";
    ::close(::mkstemp(target));
    ASSERT_EQ(::symlink(target, CLockManager::kLockFilePath), 0);
    EXPECT_EQ(CLockManager().ProcessLock(), -1);
    ::unlink(CLockManager::kLockFilePath);
    ::unlink(target);
}

}  // namespace

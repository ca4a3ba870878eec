// The real spawner, with real processes: what a module finds when it starts.
#include "CQVRPosixChildSpawner.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <signal.h>
#include <unistd.h>

#include <filesystem>
#include <set>
#include <sstream>
#include <string>

namespace {

// Everything the child prints, read to end of file; the child reaped.
std::string RunToEnd(const std::string& command) {
    CQVRPosixChildSpawner& spawner = CQVRPosixChildSpawner::Instance();
    QVRChildHandle child;
    std::string error;
    if (!spawner.Start(command, child, error)) return "start failed: " + error;
    std::string output;
    char buffer[4096];
    for (;;) {
        const long got = spawner.Read(child.fd, buffer, sizeof(buffer));
        if (got > 0) {
            output.append(buffer, static_cast<size_t>(got));
        } else if (got == 0 || errno != EINTR) {
            break;
        }
    }
    spawner.CloseReadEnd(child.fd);
    spawner.Reap(child.pid);
    return output;
}

// Descriptors this process would pass on through an exec, listed as ls lists
// them, with the one ls opens for its listing.
std::string InheritableDescriptorsAndListing() {
    std::set<int> fds = {0, 1, 2};
    for (const auto& entry : std::filesystem::directory_iterator("/proc/self/fd")) {
        const int fd = std::stoi(entry.path().filename().string());
        const int flags = fcntl(fd, F_GETFD);
        if (flags >= 0 && (flags & FD_CLOEXEC) == 0) fds.insert(fd);
    }
    int listing = 3;
    while (fds.count(listing) != 0) ++listing;
    fds.insert(listing);
    std::set<std::string> names;  // ls sorts by name
    for (int fd : fds) names.insert(std::to_string(fd));
    std::string text;
    for (const std::string& name : names) text += name + "\n";
    return text;
}

// Whatever the collector ignores or blocks, a module starts in a process group
// of its own, reading /dev/null, with default dispositions and an empty signal
// mask, and none of the descriptors the start itself made (the pipe's read
// end, /dev/null, the report pipe) reaches it.
TEST(CQVRPosixChildSpawner, AModuleStartsInItsOwnGroupWithNothingOfTheCollectorsButItsEnvironment) {
    struct sigaction ignore {};
    ignore.sa_handler = SIG_IGN;
    struct sigaction oldPipe {
    }, oldUsr1{};
    sigaction(SIGPIPE, &ignore, &oldPipe);
    sigaction(SIGUSR1, &ignore, &oldUsr1);
    sigset_t blocked, oldMask;
    sigemptyset(&blocked);
    sigaddset(&blocked, SIGUSR2);
    pthread_sigmask(SIG_BLOCK, &blocked, &oldMask);
    // Standard output closed: the pipe may land on descriptor 1 itself.
    const int savedOut = dup(STDOUT_FILENO);
    close(STDOUT_FILENO);

    // Each through a shell that execs the program reporting, as a module would.
    const std::string ids =
        RunToEnd("read -r pid comm state ppid pgrp rest < /proc/$$/stat; echo \"$pid $pgrp\"");
    const std::string input = RunToEnd("exec readlink /proc/self/fd/0");
    const std::string expectedFds = InheritableDescriptorsAndListing();
    const std::string fds = RunToEnd("exec ls /proc/self/fd");
    const std::string signals = RunToEnd("exec grep -E '^Sig(Blk|Ign)' /proc/self/status");

    dup2(savedOut, STDOUT_FILENO);
    close(savedOut);
    pthread_sigmask(SIG_SETMASK, &oldMask, nullptr);
    sigaction(SIGPIPE, &oldPipe, nullptr);
    sigaction(SIGUSR1, &oldUsr1, nullptr);

    std::istringstream idFields(ids);
    std::string pid, pgrp;
    idFields >> pid >> pgrp;
    EXPECT_FALSE(pid.empty()) << ids;
    EXPECT_EQ(pid, pgrp) << ids;
    EXPECT_EQ("/dev/null\n", input);
    EXPECT_EQ(expectedFds, fds);
    EXPECT_EQ("SigBlk:\t0000000000000000\nSigIgn:\t0000000000000000\n", signals);
}

}  // namespace

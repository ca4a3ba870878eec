#include "QVRCProcess.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <signal.h>
#include <sys/resource.h>
#include <unistd.h>

#include <chrono>
#include <cstdlib>
#include <string>
#include <thread>
#include <vector>

#include "CLinuxImpl.h"
#include "InvokerTestHelpers.h"

namespace {

using invoker_test::HasNoChildren;
using invoker_test::ReadFile;
using invoker_test::WriteFile;
using invoker_test::WriteScript;

// Real modules, run from temporary directories.
class QVRCProcessTest : public ::testing::Test {
protected:
    void TearDown() override { EXPECT_TRUE(HasNoChildren()) << "a child was left unreaped"; }

    static double SecondsSince(std::chrono::steady_clock::time_point start) {
        return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
    }
    static pid_t ReadPid(const std::string& path) {
        return static_cast<pid_t>(std::atol(ReadFile(path).c_str()));
    }

    invoker_test::CwdRestorer restoreCwd;
    invoker_test::TempDir dir;
};

TEST_F(QVRCProcessTest, CapturesOutputRunningInTheModuleDirectoryWithArguments) {
    WriteScript(dir.Path(), "mod.sh", "pwd\necho \"args:$1,$2\"\n");
    QVRCProcess process(dir.Path(), "mod.sh first second", 10, true, true);
    EXPECT_TRUE(process.Execute());
    EXPECT_EQ(dir.Path() + "\nargs:first,second\n", process.GetOutput());
}

TEST_F(QVRCProcessTest, WithoutCaptureTheModuleRunsAndOutputStaysEmpty) {
    WriteScript(dir.Path(), "mod.sh", "echo visible\ntouch ran.marker\n");
    QVRCProcess process(dir.Path(), "mod.sh", 10, false, false);
    EXPECT_TRUE(process.Execute());
    EXPECT_EQ("", process.GetOutput());
    EXPECT_EQ(0, access(dir.Sub("ran.marker").c_str(), F_OK));
}

TEST_F(QVRCProcessTest, EmptyCommandStartsNothing) {
    QVRCProcess process(dir.Path(), "", 10, true, true);
    EXPECT_FALSE(process.Execute());
    EXPECT_EQ("", process.GetOutput());
}

TEST_F(QVRCProcessTest, EmptyDirectoryRunsInTheCurrentDirectory) {
    WriteScript(dir.Path(), "mod.sh", "pwd\n");
    ASSERT_TRUE(CLinuxImpl().SetCurrentDirectory(dir.Path()));
    QVRCProcess process("", "mod.sh", 10, true, false);
    EXPECT_TRUE(process.Execute());
    EXPECT_EQ(dir.Path() + "\n", process.GetOutput());
}

TEST_F(QVRCProcessTest, MissingModuleGivesEmptyOutputAndNothingOnStandardError) {
    QVRCProcess process(dir.Path(), "absent.sh", 10, true, true);
    EXPECT_TRUE(process.Execute());
    EXPECT_EQ("", process.GetOutput());
}

TEST_F(QVRCProcessTest, LongLinesAndLargeOutputArriveUnchanged) {
    std::string expected;
    for (size_t length : {2046u, 2047u, 2048u, 2049u, 4095u, 10000u, 1u, 0u}) {
        std::string line;
        for (size_t i = 0; i < length; ++i) line.push_back(static_cast<char>('a' + (i * 7 + length) % 26));
        expected += line + "\n";
    }
    expected += std::string(1 << 20, 'z');  // no final line end
    WriteFile(dir.Sub("data.txt"), expected);
    WriteScript(dir.Path(), "mod.sh", "cat data.txt\n");
    QVRCProcess process(dir.Path(), "mod.sh", 20, true, true);
    EXPECT_TRUE(process.Execute());
    EXPECT_TRUE(process.GetOutput() == expected)
        << "got " << process.GetOutput().size() << " bytes, expected " << expected.size();
}

TEST_F(QVRCProcessTest, SleepingModuleIsKilledAtTheLimitAndItsOutputDiscarded) {
    WriteScript(dir.Path(), "slow.sh", "echo partial\nsleep 30 &\necho $! > sleeper.pid\nwait\necho late\n");
    const auto start = std::chrono::steady_clock::now();
    QVRCProcess process(dir.Path(), "slow.sh", 1, true, true);
    EXPECT_TRUE(process.Execute());
    const double elapsed = SecondsSince(start);
    EXPECT_EQ("", process.GetOutput());
    EXPECT_GE(elapsed, 0.9);
    EXPECT_LT(elapsed, 10.0);
    EXPECT_TRUE(invoker_test::ProcessDies(ReadPid(dir.Sub("sleeper.pid"))));
}

TEST_F(QVRCProcessTest, BackgroundChildHoldingStandardOutputEndsAtTheLimit) {
    // The script itself exits at once; its background child keeps the pipe open.
    WriteScript(dir.Path(), "daemon.sh",
                "(sleep 30; echo late) &\necho $! > holder.pid\necho partial\nexit 0\n");
    const auto start = std::chrono::steady_clock::now();
    QVRCProcess process(dir.Path(), "daemon.sh", 1, true, true);
    EXPECT_TRUE(process.Execute());
    const double elapsed = SecondsSince(start);
    EXPECT_EQ("", process.GetOutput());
    EXPECT_GE(elapsed, 0.9);
    EXPECT_LT(elapsed, 10.0);
    EXPECT_TRUE(invoker_test::ProcessDies(ReadPid(dir.Sub("holder.pid"))));
}

TEST_F(QVRCProcessTest, BackgroundChildThatLetsGoOfOutputDoesNotDelayTheModule) {
    WriteScript(dir.Path(), "detach.sh", "sleep 30 >/dev/null 2>&1 &\necho $! > bg.pid\necho ok\n");
    const auto start = std::chrono::steady_clock::now();
    QVRCProcess process(dir.Path(), "detach.sh", 20, true, true);
    EXPECT_TRUE(process.Execute());
    EXPECT_LT(SecondsSince(start), 10.0);
    EXPECT_EQ("ok\n", process.GetOutput());
    const pid_t background = ReadPid(dir.Sub("bg.pid"));
    ASSERT_GT(background, 0);
    kill(background, SIGKILL);
}

TEST_F(QVRCProcessTest, ModuleThatClosesOutputButRunsOnEndsAtTheLimit) {
    // The shell that started the module still holds the pipe, so no end of file
    // comes: this is a time-out like any other.
    WriteScript(dir.Path(), "linger.sh", "echo done\nexec >&-\nsleep 30\n");
    const auto start = std::chrono::steady_clock::now();
    QVRCProcess process(dir.Path(), "linger.sh", 1, true, true);
    EXPECT_TRUE(process.Execute());
    const double elapsed = SecondsSince(start);
    EXPECT_EQ("", process.GetOutput());
    EXPECT_GE(elapsed, 0.9);
    EXPECT_LT(elapsed, 10.0);
}

TEST_F(QVRCProcessTest, ModuleReadingStandardInputSeesEndOfInput) {
    // The collector's own standard input is an open pipe nobody writes to.
    int fds[2];
    ASSERT_EQ(0, pipe(fds));
    const int savedStdin = dup(STDIN_FILENO);
    ASSERT_GE(savedStdin, 0);
    ASSERT_EQ(STDIN_FILENO, dup2(fds[0], STDIN_FILENO));
    WriteScript(dir.Path(), "reader.sh", "read line\necho \"got[$line]\"\n");
    QVRCProcess process(dir.Path(), "reader.sh", 5, true, true);
    const bool started = process.Execute();
    dup2(savedStdin, STDIN_FILENO);
    close(savedStdin);
    close(fds[0]);
    close(fds[1]);
    EXPECT_TRUE(started);
    EXPECT_EQ("got[]\n", process.GetOutput());
}

TEST_F(QVRCProcessTest, ModuleStartsWithDefaultSignalMaskAndDispositions) {
    sigset_t block, previous;
    sigemptyset(&block);
    sigaddset(&block, SIGUSR1);
    ASSERT_EQ(0, pthread_sigmask(SIG_BLOCK, &block, &previous));
    struct sigaction ignore {
    }, oldTerm{};
    ignore.sa_handler = SIG_IGN;
    ASSERT_EQ(0, sigaction(SIGTERM, &ignore, &oldTerm));

    WriteScript(dir.Path(), "signals.sh", "grep -E '^Sig(Blk|Ign)' /proc/self/status\n");
    QVRCProcess process(dir.Path(), "signals.sh", 10, true, true);
    const bool started = process.Execute();

    sigaction(SIGTERM, &oldTerm, nullptr);
    pthread_sigmask(SIG_SETMASK, &previous, nullptr);
    EXPECT_TRUE(started);
    EXPECT_EQ("SigBlk:\t0000000000000000\nSigIgn:\t0000000000000000\n", process.GetOutput());
}

TEST_F(QVRCProcessTest, WorksWhenThePipeGetsADescriptorAboveTheSelectLimit) {
    rlimit limit{};
    ASSERT_EQ(0, getrlimit(RLIMIT_NOFILE, &limit));
    const rlimit saved = limit;
    if (limit.rlim_max != RLIM_INFINITY && limit.rlim_max < 1200) GTEST_SKIP() << "descriptor limit too low";
    limit.rlim_cur = 1200;
    ASSERT_EQ(0, setrlimit(RLIMIT_NOFILE, &limit));
    std::vector<int> fillers;
    for (;;) {
        const int fd = open("/dev/null", O_RDONLY | O_CLOEXEC);
        ASSERT_GE(fd, 0);
        fillers.push_back(fd);
        if (fd >= 1100) break;
    }
    WriteScript(dir.Path(), "mod.sh", "echo high\n");
    QVRCProcess process(dir.Path(), "mod.sh", 10, true, true);
    const bool started = process.Execute();
    for (int fd : fillers) close(fd);
    setrlimit(RLIMIT_NOFILE, &saved);
    EXPECT_TRUE(started);
    EXPECT_EQ("high\n", process.GetOutput());
}

TEST_F(QVRCProcessTest, ConcurrentSerialisedStartsEachRunInTheirOwnDirectory) {
    const int kModules = 8;
    std::vector<std::string> dirs;
    for (int i = 0; i < kModules; ++i) {
        dirs.push_back(dir.Sub("m" + std::to_string(i)));
        invoker_test::MakeDir(dirs.back());
        WriteScript(dirs.back(), "where.sh", "pwd\n");
    }
    std::vector<std::string> outputs(kModules);
    std::vector<std::thread> threads;
    for (int round = 0; round < 3; ++round) {
        threads.clear();
        for (int i = 0; i < kModules; ++i) {
            threads.emplace_back([&, i] {
                QVRCProcess process(dirs[i], "where.sh", 10, true, true);
                process.Execute();
                outputs[i] = process.GetOutput();
            });
        }
        for (std::thread& thread : threads) thread.join();
        for (int i = 0; i < kModules; ++i) EXPECT_EQ(dirs[i] + "\n", outputs[i]) << "module " << i;
    }
}

}  // namespace

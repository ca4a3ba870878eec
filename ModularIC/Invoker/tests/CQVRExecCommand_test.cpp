#include "CQVRExecCommand.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <deque>
#include <string>
#include <vector>

#include "InvokerTestHelpers.h"

namespace {

using invoker_test::RecordingPlatform;

// A scripted child: each wait and read answers from a queue; time moves only
// when a wait times out or the caller pauses.
class FakeSpawner : public IQVRChildSpawner {
public:
    struct ReadStep {
        std::string data;  // returned when error is 0 and data is non-empty
        int error = 0;     // errno to fail with (EAGAIN, EINTR, EIO)
        bool eof = false;
    };

    bool Start(const std::string& command, QVRChildHandle& child, std::string& error) override {
        calls.push_back("start");
        startedCommand = command;
        int rc = pthread_mutex_trylock(CQVRExecCommand::mutSharedLockInterprocesses.GetHandle());
        lockHeldAtStart = rc == EBUSY;
        if (rc == 0) pthread_mutex_unlock(CQVRExecCommand::mutSharedLockInterprocesses.GetHandle());
        if (failStart) {
            error = "refused";
            return false;
        }
        child.pid = 4242;
        child.fd = 77;
        return true;
    }
    bool SetNonBlocking(int fd) override {
        EXPECT_EQ(77, fd);
        calls.push_back("nonblock");
        return true;
    }
    int WaitReadable(int fd, int timeoutMs) override {
        EXPECT_EQ(77, fd);
        waitTimeouts.push_back(timeoutMs);
        int answer = 0;
        if (!waits.empty()) {
            answer = waits.front();
            waits.pop_front();
        }
        if (answer == 0) now += timeoutMs;
        if (answer < 0) now += 100;
        return answer;
    }
    long Read(int fd, char* buffer, std::size_t size) override {
        EXPECT_EQ(77, fd);
        if (reads.empty()) {
            errno = EAGAIN;
            return -1;
        }
        ReadStep step = reads.front();
        reads.pop_front();
        if (step.eof) return 0;
        if (step.error != 0) {
            errno = step.error;
            return -1;
        }
        EXPECT_LE(step.data.size(), size);
        std::memcpy(buffer, step.data.data(), step.data.size());
        return static_cast<long>(step.data.size());
    }
    void CloseReadEnd(int fd) override {
        EXPECT_EQ(77, fd);
        calls.push_back("close");
    }
    void KillProcessGroup(pid_t pgid) override {
        EXPECT_EQ(4242, pgid);
        calls.push_back("killpg");
    }
    bool WaitExit(pid_t pid, int timeoutMs, int& status) override {
        EXPECT_EQ(4242, pid);
        if (!exits) {
            now += timeoutMs;
            return false;
        }
        calls.push_back("reaped");
        status = 0x0100;
        return true;
    }
    int Reap(pid_t pid) override {
        EXPECT_EQ(4242, pid);
        calls.push_back("reap");
        return 9;  // killed by SIGKILL
    }
    long long NowMilliseconds() override { return now; }

    bool failStart = false;
    bool lockHeldAtStart = false;
    long long now = 1000000;
    bool exits = true;  // false: runs on after closing its output
    std::string startedCommand;
    std::deque<int> waits;
    std::deque<ReadStep> reads;
    std::vector<int> waitTimeouts;
    std::vector<std::string> calls;
};

FakeSpawner::ReadStep Data(const std::string& text) {
    FakeSpawner::ReadStep step;
    step.data = text;
    return step;
}
FakeSpawner::ReadStep Error(int error) {
    FakeSpawner::ReadStep step;
    step.error = error;
    return step;
}
FakeSpawner::ReadStep Eof() {
    FakeSpawner::ReadStep step;
    step.eof = true;
    return step;
}

class CQVRExecCommandTest : public ::testing::Test {
protected:
    void SetUp() override { platform.runShellCommands = false; }
    RecordingPlatform platform;
    FakeSpawner spawner;
};

TEST(CQVRExecCommandTexts, ShellCommandAndKillLineAreBuiltAsDocumented) {
    EXPECT_EQ("./inv.sh -x a 2>/dev/null ", CQVRExecCommand::BuildShellCommand("inv.sh -x a"));
    EXPECT_EQ("kill -9 `ps --ppid 321 | grep inv.sh -x | awk '{print $1}'`",
              CQVRExecCommand::BuildKillCommand(321, "inv.sh -x"));
}

TEST_F(CQVRExecCommandTest, StartTakesTheStartLockOnlyWhenSerialised) {
    for (bool serialize : {true, false}) {
        SCOPED_TRACE(serialize);
        FakeSpawner local;
        CQVRExecCommand command("", "mod", serialize, 5, true, &local);
        ASSERT_TRUE(command.Execute());
        EXPECT_EQ(serialize, local.lockHeldAtStart);
        EXPECT_EQ("./mod 2>/dev/null ", local.startedCommand);
        local.reads = {Eof()};
        local.waits = {1};
    }
    EXPECT_TRUE(platform.Directories().empty());
}

TEST_F(CQVRExecCommandTest, ChangesToTheDirectoryBeforeStarting) {
    invoker_test::CwdRestorer restore;
    CQVRExecCommand command("/tmp", "mod", true, 5, true, &spawner);
    spawner.waits = {1};
    spawner.reads = {Eof()};
    ASSERT_TRUE(command.Execute());
    EXPECT_EQ(std::vector<std::string>{"/tmp"}, platform.Directories());
    EXPECT_EQ(CQVRExecCommand::kStateRunning, command.GetState());
}

TEST_F(CQVRExecCommandTest, DirectoryThatCannotBeEnteredStartsNothing) {
    platform.failDirectoryChange = true;
    CQVRExecCommand command("/nowhere", "mod", true, 5, true, &spawner);
    EXPECT_FALSE(command.Execute());
    EXPECT_EQ(CQVRExecCommand::kStateFailed, command.GetState());
    EXPECT_TRUE(spawner.calls.empty());
    EXPECT_FALSE(command.ReadConsoleBuffer());
    EXPECT_TRUE(command.IsProcessCompleted());
}

TEST_F(CQVRExecCommandTest, FailedStartLeavesStateTwoAndNothingToRead) {
    spawner.failStart = true;
    CQVRExecCommand command("", "mod", false, 5, true, &spawner);
    EXPECT_FALSE(command.Execute());
    EXPECT_EQ(CQVRExecCommand::kStateFailed, command.GetState());
    EXPECT_FALSE(command.ReadConsoleBuffer());
    EXPECT_TRUE(command.EndProcess());
    EXPECT_EQ("", command.GetConsoleBuffer());
    EXPECT_EQ(-1, command.GetExitStatus());
    EXPECT_FALSE(command.Execute());
}

TEST_F(CQVRExecCommandTest, ReadsEveryPieceUntilEndOfFileAcrossInterruptedWaits) {
    CQVRExecCommand command("", "mod", false, 5, true, &spawner);
    ASSERT_TRUE(command.Execute());
    spawner.waits = {1, -1, 1, 1};
    spawner.reads = {
        Data("<SVM"),  Error(EINTR), Data("Inventory>"), Error(EAGAIN), Data("\n</SVMInventory>\n"),
        Error(EAGAIN), Eof()};
    EXPECT_TRUE(command.ReadConsoleBuffer());
    EXPECT_EQ(CQVRExecCommand::kStateCompleted, command.GetState());
    EXPECT_EQ("<SVMInventory>\n</SVMInventory>\n", command.GetConsoleBuffer());
    EXPECT_EQ(0x0100, command.GetExitStatus());
    EXPECT_TRUE(command.IsProcessCompleted());
    EXPECT_EQ((std::vector<std::string>{"start", "nonblock", "close", "reaped"}), spawner.calls);
    EXPECT_TRUE(platform.ShellCommands().empty());
    // The budget is the total: each wait gets what is left of five seconds.
    ASSERT_EQ(4u, spawner.waitTimeouts.size());
    EXPECT_EQ(5000, spawner.waitTimeouts[0]);
    EXPECT_EQ(4900, spawner.waitTimeouts[2]);
}

TEST_F(CQVRExecCommandTest, OutputIsDiscardedWithoutCapture) {
    CQVRExecCommand command("", "mod", false, 5, false, &spawner);
    ASSERT_TRUE(command.Execute());
    spawner.waits = {1};
    spawner.reads = {Data("text"), Eof()};
    EXPECT_TRUE(command.EndProcess());
    EXPECT_EQ(CQVRExecCommand::kStateCompleted, command.GetState());
    EXPECT_EQ("", command.GetConsoleBuffer());
}

TEST_F(CQVRExecCommandTest, TimeOutRunsTheKillLineKillsTheGroupAndDiscardsPartialOutput) {
    CQVRExecCommand command("", "mod arg", true, 2, true, &spawner);
    ASSERT_TRUE(command.Execute());
    spawner.waits = {1, 0};
    spawner.reads = {Data("partial"), Error(EAGAIN)};
    EXPECT_TRUE(command.ReadConsoleBuffer());
    EXPECT_EQ(CQVRExecCommand::kStateFailed, command.GetState());
    EXPECT_EQ("", command.GetConsoleBuffer());
    EXPECT_EQ(9, command.GetExitStatus());
    EXPECT_EQ(std::vector<std::string>{CQVRExecCommand::BuildKillCommand(getpid(), "mod arg")},
              platform.ShellCommands());
    EXPECT_EQ((std::vector<std::string>{"start", "nonblock", "killpg", "close", "reap"}), spawner.calls);
    EXPECT_TRUE(command.IsProcessCompleted());
    EXPECT_TRUE(command.EndProcess());
}

TEST_F(CQVRExecCommandTest, WaitsThatKeepFailingStillEndAtTheLimit) {
    CQVRExecCommand command("", "mod", false, 1, true, &spawner);
    ASSERT_TRUE(command.Execute());
    spawner.waits = std::deque<int>(50, -1);
    EXPECT_TRUE(command.ReadConsoleBuffer());
    EXPECT_EQ(CQVRExecCommand::kStateFailed, command.GetState());
    EXPECT_EQ(1u, platform.ShellCommands().size());
    EXPECT_LE(spawner.waitTimeouts.size(), 12u);
}

TEST_F(CQVRExecCommandTest, ChildThatClosesItsOutputButRunsOnIsKilledAtTheLimitKeepingItsOutput) {
    CQVRExecCommand command("", "mod", false, 3, true, &spawner);
    ASSERT_TRUE(command.Execute());
    spawner.exits = false;
    spawner.waits = {1};
    spawner.reads = {Data("done\n"), Eof()};
    const long long started = spawner.now;
    EXPECT_TRUE(command.ReadConsoleBuffer());
    EXPECT_EQ(CQVRExecCommand::kStateCompleted, command.GetState());
    EXPECT_EQ("done\n", command.GetConsoleBuffer());
    EXPECT_EQ((std::vector<std::string>{"start", "nonblock", "close", "killpg", "reap"}), spawner.calls);
    EXPECT_EQ(started + 3000, spawner.now);
    EXPECT_TRUE(platform.ShellCommands().empty());
}

TEST_F(CQVRExecCommandTest, DestructorFinishesAChildThatWasNeverRead) {
    {
        CQVRExecCommand command("", "mod", false, 5, true, &spawner);
        ASSERT_TRUE(command.Execute());
        spawner.waits = {1};
        spawner.reads = {Eof()};
    }
    EXPECT_EQ((std::vector<std::string>{"start", "nonblock", "close", "reaped"}), spawner.calls);
}

}  // namespace

#include "CQVRExecCommand.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <deque>

#include "InvokerTestHelpers.h"

namespace {

using Calls = std::vector<std::string>;

// A scripted child on descriptor 77: waits and reads answer from queues
// (read "" = EAGAIN, "!" = EINTR, "$" = end of file); time moves only when a
// wait times out or is interrupted.
class FakeSpawner : public IQVRChildSpawner {
public:
    bool Start(const std::string& command, QVRChildHandle& child, std::string&) override {
        calls.push_back("start");
        started = command;
        const int rc = pthread_mutex_trylock(CQVRExecCommand::mutSharedLockInterprocesses.GetHandle());
        lockHeld = rc == EBUSY;
        if (rc == 0) pthread_mutex_unlock(CQVRExecCommand::mutSharedLockInterprocesses.GetHandle());
        child = {4242, 77};
        return true;
    }
    bool SetNonBlocking(int) override { return true; }
    int WaitReadable(int, int timeoutMs) override {
        timeouts.push_back(timeoutMs);
        const int answer = waits.empty() ? 0 : waits.front();
        if (!waits.empty()) waits.pop_front();
        now += answer == 0 ? timeoutMs : answer < 0 ? 100 : 0;
        return answer;
    }
    long Read(int, char* buffer, std::size_t) override {
        const std::string step = reads.empty() ? "" : reads.front();
        if (!reads.empty()) reads.pop_front();
        if (step == "$") return 0;
        errno = step == "!" ? EINTR : EAGAIN;
        if (step.empty() || step == "!") return -1;
        std::memcpy(buffer, step.data(), step.size());
        return static_cast<long>(step.size());
    }
    void CloseReadEnd(int) override { calls.push_back("close"); }
    void KillProcessGroup(pid_t) override { calls.push_back("killpg"); }
    bool WaitExit(pid_t, int, int& status) override {
        calls.push_back("reaped");
        status = 0x0100;
        return true;
    }
    int Reap(pid_t) override {
        calls.push_back("reap");
        return 9;
    }
    long long NowMilliseconds() override { return now; }
    void Pause(int milliseconds) override {
        pauses.push_back(milliseconds);
        now += milliseconds;
    }

    std::vector<int> pauses;
    bool lockHeld = false;
    long long now = 1000000;
    std::string started;
    std::deque<int> waits;
    std::deque<std::string> reads;
    std::vector<int> timeouts;
    Calls calls;
};

struct CQVRExecCommandTest : ::testing::Test {
    invoker_test::RecordingPlatform platform;
    FakeSpawner spawner;
};

TEST_F(CQVRExecCommandTest, ReadsEveryPieceUntilEndOfFileWithinOneTotalBudget) {
    CQVRExecCommand command("", "mod", false, 5, true, &spawner, CQVRExecCommand::kMaxOutputBytes, &platform);
    ASSERT_TRUE(command.Execute());
    EXPECT_EQ("./mod 2>/dev/null ", spawner.started);
    EXPECT_FALSE(spawner.lockHeld);
    spawner.waits = {1, -1, 1, 1};
    spawner.reads = {"<SVM", "!", "Inventory>", "", "\n</SVMInventory>\n", "", "$"};
    EXPECT_TRUE(command.ReadConsoleBuffer());
    EXPECT_EQ("<SVMInventory>\n</SVMInventory>\n", command.GetConsoleBuffer());
    EXPECT_EQ((Calls{"start", "close", "reaped"}), spawner.calls);
    EXPECT_EQ((std::vector<int>{5000, 5000, 4900, 4900}), spawner.timeouts);
    EXPECT_TRUE(platform.shellCommands.empty());
}

TEST_F(CQVRExecCommandTest, TimeOutOrOutputPastTheLimitRunsTheKillLineAndDiscardsWhatWasPrinted) {
    const std::string killLine =
        "kill -9 `ps --ppid " + std::to_string(getpid()) + " | grep mod arg | awk '{print $1}'`";
    const struct {
        bool capture;
        std::size_t limit;
        std::deque<int> waits;
        bool killed;
    } rows[] = {{true, CQVRExecCommand::kMaxOutputBytes, {1, 0}, true},  // the second wait times out
                {true, 10, {1, 1}, true},                                // the eleventh byte is one too many
                {false, 10, {1, 1}, false}};  // without capture nothing is kept, so there is nothing to limit
    for (const auto& row : rows) {
        FakeSpawner child;
        invoker_test::RecordingPlatform shell;
        CQVRExecCommand command("", "mod arg", true, 2, row.capture, &child, row.limit, &shell);
        ASSERT_TRUE(command.Execute());
        EXPECT_TRUE(child.lockHeld);
        child.waits = row.waits;
        child.reads = {"12345", "67890", "", "1", "$"};
        EXPECT_TRUE(command.ReadConsoleBuffer());
        EXPECT_EQ("", command.GetConsoleBuffer());
        EXPECT_EQ(
            row.killed ? Calls({"start", "killpg", "close", "reap"}) : Calls({"start", "close", "reaped"}),
            child.calls);
        EXPECT_EQ(row.killed ? Calls{killLine} : Calls{}, shell.shellCommands);
        // The kill line's complaints stay off stderr.
        EXPECT_EQ(std::vector<bool>(row.killed ? 1 : 0, true), shell.quietShellCommands);
    }
}

TEST_F(CQVRExecCommandTest, AWaitThatKeepsFailingBacksOffInsteadOfSpinningAndEndsAtTheBudget) {
    CQVRExecCommand command("", "mod", false, 2, true, &spawner, CQVRExecCommand::kMaxOutputBytes, &platform);
    ASSERT_TRUE(command.Execute());
    spawner.waits = std::deque<int>(100, -1);
    EXPECT_TRUE(command.ReadConsoleBuffer());
    EXPECT_EQ((Calls{"start", "killpg", "close", "reap"}), spawner.calls);
    ASSERT_GE(spawner.pauses.size(), 3u);
    EXPECT_EQ((std::vector<int>{2, 3, 4}),
              std::vector<int>(spawner.pauses.begin(), spawner.pauses.begin() + 3));
}

TEST_F(CQVRExecCommandTest, DestroyingARunningCommandKillsAndReapsItWithoutReading) {
    {
        CQVRExecCommand command("", "mod", false, 5, true, &spawner, CQVRExecCommand::kMaxOutputBytes,
                                &platform);
        ASSERT_TRUE(command.Execute());
        spawner.waits = {1};
        spawner.reads = {"never read"};
    }
    EXPECT_EQ((Calls{"start", "killpg", "close", "reap"}), spawner.calls);
    EXPECT_TRUE(spawner.timeouts.empty());
    EXPECT_TRUE(platform.shellCommands.empty());
}

}  // namespace

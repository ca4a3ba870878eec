#include "QVRCThread.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <atomic>
#include <functional>
#include <stdexcept>
#include <thread>

#include "CQVRThreadPoolQueue.h"

namespace {

// A thread whose initialisation and body are given by the test.
class LambdaThread : public QVRCThread {
public:
    explicit LambdaThread(std::function<int()> body, std::function<void()> init = nullptr,
                          std::function<void()> uninit = nullptr)
        : m_body(std::move(body)), m_init(std::move(init)), m_uninit(std::move(uninit)) {}

    int Run() override {
        ranBody = true;
        return m_body();
    }
    void ThreadInitialize() override {
        if (m_init) m_init();
    }
    void ThreadUnInitialize() override {
        uninitialized = true;
        if (m_uninit) m_uninit();
    }

    std::atomic<bool> ranBody{false};
    std::atomic<bool> uninitialized{false};

private:
    std::function<int()> m_body;
    std::function<void()> m_init;
    std::function<void()> m_uninit;
};

void WaitFor(const std::atomic<bool>& flag) {
    while (!flag) std::this_thread::yield();
}

TEST(QVRCThreadTest, NewThreadIsEndedWithExitCodeTenAndRefusesEndKillDetachPriority) {
    LambdaThread thread([] { return 0; });
    EXPECT_TRUE(thread.IsThreadEnded());
    EXPECT_FALSE(thread.IsStarted());
    EXPECT_EQ(10, thread.GetExitCode());
    EXPECT_EQ(QVRCThread::kStatusNotRun, thread.GetRunStatus());
    EXPECT_FALSE(thread.End(0));
    EXPECT_FALSE(thread.Kill(0));
    EXPECT_FALSE(thread.DetachThread());
    // A priority asked before the start is refused and changes nothing.
    EXPECT_FALSE(thread.SetPriority(20));
}

struct RunStatusCase {
    const char* name;
    std::function<int()> body;
    std::function<void()> init;
    int32_t expectedStatus;
    bool expectBodyRan;
};

TEST(QVRCThreadTest, RunStatusFollowsHowTheThreadEnded) {
    const RunStatusCase cases[] = {
        {"returns zero", [] { return 0; }, nullptr, QVRCThread::kStatusRunSucceeded, true},
        {"returns non-zero", [] { return 7; }, nullptr, QVRCThread::kStatusRunFailed, true},
        {"run throws std exception", []() -> int { throw std::runtime_error("x"); }, nullptr,
         QVRCThread::kStatusThrew, true},
        {"run throws non-standard", []() -> int { throw 42; }, nullptr, QVRCThread::kStatusThrew, true},
        {"initialise throws", [] { return 0; }, [] { throw std::runtime_error("init"); },
         QVRCThread::kStatusThrew, false},
    };
    for (const RunStatusCase& c : cases) {
        SCOPED_TRACE(c.name);
        LambdaThread thread(c.body, c.init);
        ASSERT_TRUE(thread.Execute());
        EXPECT_FALSE(thread.IsThreadEnded());
        EXPECT_TRUE(thread.End(3));
        EXPECT_TRUE(thread.IsThreadEnded());
        EXPECT_EQ(3, thread.GetExitCode());
        EXPECT_EQ(c.expectedStatus, thread.GetRunStatus());
        EXPECT_EQ(c.expectBodyRan, thread.ranBody.load());
        EXPECT_TRUE(thread.uninitialized.load());
        EXPECT_FALSE(thread.End(4));
        EXPECT_EQ(3, thread.GetExitCode());
    }
}

TEST(QVRCThreadTest, UninitializeExceptionIsSwallowed) {
    LambdaThread thread([] { return 0; }, nullptr, [] { throw std::logic_error("late"); });
    ASSERT_TRUE(thread.Execute());
    EXPECT_TRUE(thread.End(0));
    EXPECT_EQ(QVRCThread::kStatusRunSucceeded, thread.GetRunStatus());
}

TEST(QVRCThreadTest, SecondExecuteIsRefused) {
    LambdaThread thread([] { return 0; });
    ASSERT_TRUE(thread.Execute());
    EXPECT_FALSE(thread.Execute());
    EXPECT_TRUE(thread.End(0));
    EXPECT_FALSE(thread.Execute());
}

TEST(QVRCThreadTest, SetPriorityOnRunningThreadTries) {
    std::atomic<bool> release{false};
    LambdaThread thread([&] {
        WaitFor(release);
        return 0;
    });
    ASSERT_TRUE(thread.Execute());
    EXPECT_TRUE(thread.SetPriority(0));
    release = true;
    EXPECT_TRUE(thread.End(0));
}

TEST(QVRCThreadTest, KillCancelsABlockedThread) {
    std::atomic<bool> running{false};
    LambdaThread thread([&] {
        running = true;
        for (;;) pause();  // a cancellation point that never returns
        return 0;
    });
    ASSERT_TRUE(thread.Execute());
    WaitFor(running);
    EXPECT_TRUE(thread.Kill(9));
    EXPECT_TRUE(thread.IsThreadEnded());
    EXPECT_EQ(9, thread.GetExitCode());
    EXPECT_FALSE(thread.Kill(9));
    EXPECT_FALSE(thread.End(0));
}

TEST(QVRCThreadTest, KillOfAFinishedThreadFailsAndLeavesNoSecondJoin) {
    std::atomic<bool> done{false};
    LambdaThread thread([] { return 0; }, nullptr, [&] { done = true; });
    ASSERT_TRUE(thread.Execute());
    WaitFor(done);
    EXPECT_FALSE(thread.Kill(1));
    EXPECT_FALSE(thread.IsThreadEnded());
    // The thread was joined by Kill; End must not join it again.
    EXPECT_FALSE(thread.End(0));
    EXPECT_TRUE(thread.IsThreadEnded());
}

TEST(QVRCThreadTest, DetachEndsOwnership) {
    std::atomic<bool> release{false};
    std::atomic<bool> finished{false};
    LambdaThread thread(
        [&] {
            WaitFor(release);
            return 0;
        },
        nullptr, [&] { finished = true; });
    ASSERT_TRUE(thread.Execute());
    EXPECT_TRUE(thread.DetachThread());
    EXPECT_TRUE(thread.IsThreadEnded());
    EXPECT_FALSE(thread.DetachThread());
    EXPECT_FALSE(thread.End(0));
    release = true;
    WaitFor(finished);
}

TEST(CQVRThreadPoolQueueTest, NextTaskBlocksUntilATaskArrivesAndKeepsOrder) {
    CQVRThreadPoolQueue queue;
    ASSERT_TRUE(queue.Initalize());
    struct NoopTask : IQVRThreadPoolTask {
        void Process() override {}
    } first, second;

    std::atomic<IQVRThreadPoolTask*> taken{nullptr};
    std::atomic<bool> gotOne{false};
    std::thread consumer([&] {
        taken = queue.NextTask();
        gotOne = true;
    });
    queue.AddTask(&first);
    WaitFor(gotOne);
    consumer.join();
    EXPECT_EQ(&first, taken.load());

    queue.AddTask(&second);
    queue.AddTask(nullptr);
    queue.AddTask(&first);
    EXPECT_EQ(3u, queue.GetPendingCount());
    EXPECT_EQ(&second, queue.NextTask());
    EXPECT_EQ(nullptr, queue.NextTask());
    EXPECT_EQ(&first, queue.NextTask());
    EXPECT_EQ(0u, queue.GetPendingCount());
}

}  // namespace

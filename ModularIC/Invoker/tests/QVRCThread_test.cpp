#include "QVRCThread.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <atomic>
#include <functional>
#include <stdexcept>
#include <thread>

namespace {

// A thread whose initialisation and body are given by the test.
class LambdaThread : public QVRCThread {
public:
    LambdaThread(std::function<int()> body, std::function<void()> init = nullptr)
        : m_body(std::move(body)), m_init(std::move(init)) {}
    int Run() override { return m_body(); }
    void ThreadInitialize() override {
        if (m_init) m_init();
    }
    void ThreadUnInitialize() override { uninitialized = true; }
    std::atomic<bool> uninitialized{false};

private:
    std::function<int()> m_body;
    std::function<void()> m_init;
};

TEST(QVRCThreadTest, RunStatusFollowsHowTheThreadEnded) {
    struct Row {
        const char* name;
        std::function<int()> body;
        std::function<void()> init;
        int32_t status;
    };
    const Row rows[] = {
        {"returns zero", [] { return 0; }, nullptr, QVRCThread::kStatusRunSucceeded},
        {"returns non-zero", [] { return 7; }, nullptr, QVRCThread::kStatusRunFailed},
        {"run throws", []() -> int { throw std::runtime_error("x"); }, nullptr, QVRCThread::kStatusThrew},
        {"run throws a non-standard value", []() -> int { throw 42; }, nullptr, QVRCThread::kStatusThrew},
        {"initialise throws", [] { return 0; }, [] { throw std::runtime_error("i"); },
         QVRCThread::kStatusThrew},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.name);
        LambdaThread thread(row.body, row.init);
        // Not started yet: counts as ended, so nothing can be done to it.
        EXPECT_EQ(10, thread.GetExitCode());
        EXPECT_FALSE(thread.End(0));
        EXPECT_FALSE(thread.Kill(0));
        ASSERT_TRUE(thread.Execute());
        EXPECT_FALSE(thread.Execute());
        EXPECT_TRUE(thread.End(3));
        EXPECT_EQ(3, thread.GetExitCode());
        EXPECT_EQ(row.status, thread.GetRunStatus());
        EXPECT_TRUE(thread.uninitialized.load());
        EXPECT_FALSE(thread.End(4));  // joined once only
    }
}

TEST(QVRCThreadTest, KillCancelsABlockedThread) {
    std::atomic<bool> running{false};
    LambdaThread thread([&] {
        running = true;
        for (;;) pause();
        return 0;
    });
    ASSERT_TRUE(thread.Execute());
    while (!running) std::this_thread::yield();
    EXPECT_TRUE(thread.Kill(9));
    EXPECT_TRUE(thread.IsThreadEnded());
    EXPECT_EQ(9, thread.GetExitCode());
    EXPECT_FALSE(thread.End(0));
}

}  // namespace

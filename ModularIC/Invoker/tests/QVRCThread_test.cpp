#include "QVRCThread.h"

#include <gtest/gtest.h>

#include <atomic>
#include <functional>
#include <stdexcept>

namespace {

// A thread whose initialisation and body are given by the test.
struct LambdaThread : QVRCThread {
    LambdaThread(std::function<int()> body, std::function<void()> init) : body(body), init(init) {}
    int Run() override { return body(); }
    void ThreadInitialize() override { init(); }
    void ThreadUnInitialize() override { uninitialized = true; }
    std::function<int()> body;
    std::function<void()> init;
    std::atomic<bool> uninitialized{false};
};

TEST(QVRCThreadTest, RunStatusFollowsHowTheThreadEnded) {
    const auto throws = []() -> int { throw std::runtime_error("x"); };
    const std::tuple<std::function<int()>, std::function<void()>, int32_t> rows[] = {
        {[] { return 0; }, [] {}, QVRCThread::kStatusRunSucceeded},
        {[] { return 7; }, [] {}, QVRCThread::kStatusRunFailed},
        {throws, [] {}, QVRCThread::kStatusThrew},
        {[]() -> int { throw 42; }, [] {}, QVRCThread::kStatusThrew},
        {[] { return 0; }, [] { throw std::runtime_error("i"); }, QVRCThread::kStatusThrew}};
    for (const auto& [body, init, status] : rows) {
        LambdaThread thread(body, init);
        // Not started yet: counts as ended, so nothing can be done to it.
        EXPECT_FALSE(thread.End(0) || thread.Kill(0));
        ASSERT_TRUE(thread.Execute());
        EXPECT_FALSE(thread.Execute());
        EXPECT_TRUE(thread.End(3));
        EXPECT_EQ(status, thread.GetRunStatus());
        EXPECT_TRUE(thread.uninitialized.load());
        EXPECT_FALSE(thread.End(4));  // joined once only
    }
}

}  // namespace

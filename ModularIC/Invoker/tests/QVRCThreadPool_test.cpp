#include "QVRCThreadPool.h"

#include <gtest/gtest.h>

#include <deque>
#include <mutex>
#include <vector>

namespace {

// Records its id in a shared journal when run.
struct Task : IQVRThreadPoolTask {
    Task(std::vector<int>& journal, std::mutex& mutex, int id) : journal(journal), mutex(mutex), id(id) {}
    void Process() override {
        std::lock_guard<std::mutex> lock(mutex);
        journal.push_back(id);
    }
    std::vector<int>& journal;
    std::mutex& mutex;
    int id;
};

class QVRCThreadPoolTest : public ::testing::Test {
protected:
    Task* T(int id) { return &tasks.emplace_back(journal, mutex, id); }
    std::vector<int> journal;
    std::mutex mutex;
    std::deque<Task> tasks;
};

TEST_F(QVRCThreadPoolTest, OneWorkerRunsTasksInQueueOrderUntilTheNullTask) {
    QVRCThreadPool pool;
    ASSERT_TRUE(pool.Initalize(1, true));
    std::vector<int> expected;
    for (int i = 0; i < 50; ++i) {
        ASSERT_TRUE(pool.AddToThreadPool(T(i)));
        expected.push_back(i);
    }
    EXPECT_TRUE(pool.AddToThreadPool(nullptr));  // stops the worker: later tasks never run
    pool.AddToThreadPool(T(50));
    EXPECT_TRUE(pool.JoinToThreadPool());
    EXPECT_TRUE(pool.JoinToThreadPool());
    EXPECT_EQ(expected, journal);
}

}  // namespace

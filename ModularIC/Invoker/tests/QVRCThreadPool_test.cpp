#include "QVRCThreadPool.h"

#include <gtest/gtest.h>
#include <pthread.h>

#include <chrono>
#include <condition_variable>
#include <memory>
#include <mutex>
#include <stdexcept>
#include <vector>

namespace {

// Records the order tasks ran in; with a rendezvous count, each task also
// waits until that many have started, which only a truly parallel pool passes.
struct Journal {
    std::mutex mutex;
    std::condition_variable cv;
    std::vector<int> ids;
    int rendezvous = 0;
    int timedOut = 0;
    int policy = -1;
};

class Task : public IQVRThreadPoolTask {
public:
    Task(Journal& journal, int id) : m_journal(journal), m_id(id) {}
    void Process() override {
        std::unique_lock<std::mutex> lock(m_journal.mutex);
        m_journal.ids.push_back(m_id);
        sched_param param{};
        pthread_getschedparam(pthread_self(), &m_journal.policy, &param);
        m_journal.cv.notify_all();
        const auto all = [&] { return static_cast<int>(m_journal.ids.size()) >= m_journal.rendezvous; };
        if (!m_journal.cv.wait_for(lock, std::chrono::seconds(20), all)) ++m_journal.timedOut;
    }

private:
    Journal& m_journal;
    int m_id;
};

class QVRCThreadPoolTest : public ::testing::Test {
protected:
    Task* T(int id) {
        tasks.emplace_back(new Task(journal, id));
        return tasks.back().get();
    }
    Journal journal;
    std::vector<std::unique_ptr<Task>> tasks;
};

TEST_F(QVRCThreadPoolTest, OneWorkerRunsTasksInQueueOrderAndRaisedPriorityChangesNothing) {
    QVRCThreadPool pool;
    ASSERT_TRUE(pool.Initalize(1, true));
    EXPECT_FALSE(pool.Initalize(3, false));
    std::vector<int> expected;
    for (int i = 0; i < 50; ++i) {
        ASSERT_TRUE(pool.AddToThreadPool(T(i)));
        expected.push_back(i);
    }
    EXPECT_TRUE(pool.JoinToThreadPool());
    EXPECT_TRUE(pool.JoinToThreadPool());
    EXPECT_EQ(expected, journal.ids);
    EXPECT_EQ(SCHED_OTHER, journal.policy);
    EXPECT_TRUE(pool.GetWorkers().empty());
}

TEST_F(QVRCThreadPoolTest, WorkersRunSideBySideAndJoinWaitsForEveryTask) {
    journal.rendezvous = 4;
    QVRCThreadPool pool;
    ASSERT_TRUE(pool.Initalize(4, false));
    for (int i = 0; i < 40; ++i) pool.AddToThreadPool(T(i));
    EXPECT_TRUE(pool.JoinToThreadPool());
    EXPECT_EQ(40u, journal.ids.size());
    EXPECT_EQ(0, journal.timedOut);
}

TEST_F(QVRCThreadPoolTest, NullTaskStopsTheOnlyWorkerAndLaterTasksNeverRun) {
    QVRCThreadPool pool;
    ASSERT_TRUE(pool.Initalize(1, false));
    pool.AddToThreadPool(T(0));
    EXPECT_TRUE(pool.AddToThreadPool(nullptr));
    pool.AddToThreadPool(T(1));
    EXPECT_TRUE(pool.JoinToThreadPool());
    EXPECT_EQ(std::vector<int>{0}, journal.ids);
}

TEST_F(QVRCThreadPoolTest, ThrowingTaskEndsItsWorker) {
    struct Thrower : IQVRThreadPoolTask {
        void Process() override { throw std::runtime_error("task failed"); }
    } thrower;
    QVRCThreadPool pool;
    ASSERT_TRUE(pool.Initalize(1, false));
    pool.AddToThreadPool(&thrower);
    pool.AddToThreadPool(T(0));
    EXPECT_TRUE(pool.JoinToThreadPool());
    EXPECT_TRUE(journal.ids.empty());
}

TEST_F(QVRCThreadPoolTest, ZeroThreadsOrNoInitaliseNeverRunTasks) {
    QVRCThreadPool none;
    EXPECT_FALSE(none.AddToThreadPool(T(0)));
    EXPECT_FALSE(none.JoinToThreadPool());
    QVRCThreadPool zero;
    EXPECT_TRUE(zero.Initalize(0, false));
    EXPECT_TRUE(zero.AddToThreadPool(T(1)));
    EXPECT_TRUE(zero.JoinToThreadPool());
    EXPECT_TRUE(zero.JoinToThreadPool());
    EXPECT_TRUE(journal.ids.empty());
}

TEST_F(QVRCThreadPoolTest, DestructorFinishesARunningPool) {
    {
        QVRCThreadPool pool;
        ASSERT_TRUE(pool.Initalize(2, false));
        for (int i = 0; i < 10; ++i) pool.AddToThreadPool(T(i));
    }
    EXPECT_EQ(10u, journal.ids.size());
}

}  // namespace

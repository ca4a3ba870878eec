#include "QVRCThreadPool.h"

#include <gtest/gtest.h>
#include <pthread.h>
#include <sched.h>

#include <algorithm>
#include <chrono>
#include <condition_variable>
#include <memory>
#include <mutex>
#include <stdexcept>
#include <vector>

namespace {

// Collects the order in which tasks ran.
class Journal {
public:
    void Add(int id) {
        std::lock_guard<std::mutex> lock(m_mutex);
        m_ids.push_back(id);
    }
    std::vector<int> Ids() {
        std::lock_guard<std::mutex> lock(m_mutex);
        return m_ids;
    }

private:
    std::mutex m_mutex;
    std::vector<int> m_ids;
};

class RecordingTask : public IQVRThreadPoolTask {
public:
    RecordingTask(Journal& journal, int id) : m_journal(journal), m_id(id) {}
    void Process() override {
        m_journal.Add(m_id);
        int policy = 0;
        sched_param param{};
        pthread_getschedparam(pthread_self(), &policy, &param);
        schedPolicy = policy;
        schedPriority = param.sched_priority;
    }
    int schedPolicy = -1;
    int schedPriority = -1;

private:
    Journal& m_journal;
    int m_id;
};

std::vector<std::unique_ptr<RecordingTask>> MakeTasks(Journal& journal, int count) {
    std::vector<std::unique_ptr<RecordingTask>> tasks;
    for (int i = 0; i < count; ++i) tasks.emplace_back(new RecordingTask(journal, i));
    return tasks;
}

TEST(QVRCThreadPoolTest, OneWorkerRunsTasksInQueueOrder) {
    Journal journal;
    auto tasks = MakeTasks(journal, 50);
    QVRCThreadPool pool;
    ASSERT_TRUE(pool.Initalize(1, false));
    for (auto& task : tasks) ASSERT_TRUE(pool.AddToThreadPool(task.get()));
    EXPECT_TRUE(pool.JoinToThreadPool());
    std::vector<int> expected;
    for (int i = 0; i < 50; ++i) expected.push_back(i);
    EXPECT_EQ(expected, journal.Ids());
    EXPECT_TRUE(pool.GetWorkers().empty());
    EXPECT_TRUE(pool.IsDeinitialized());
}

TEST(QVRCThreadPoolTest, JoinWaitsForEveryTaskOnEveryWorker) {
    Journal journal;
    auto tasks = MakeTasks(journal, 200);
    QVRCThreadPool pool;
    ASSERT_TRUE(pool.Initalize(4, false));
    EXPECT_EQ(4u, pool.GetWorkers().size());
    for (auto& task : tasks) pool.AddToThreadPool(task.get());
    EXPECT_TRUE(pool.JoinToThreadPool());
    std::vector<int> ids = journal.Ids();
    std::sort(ids.begin(), ids.end());
    ASSERT_EQ(200u, ids.size());
    for (int i = 0; i < 200; ++i) EXPECT_EQ(i, ids[i]);
}

// Each task waits until all of them have started: only a pool that really runs
// them side by side gets past it.
class RendezvousTask : public IQVRThreadPoolTask {
public:
    struct Shared {
        std::mutex mutex;
        std::condition_variable cv;
        int arrived = 0;
        int expected = 0;
        int timedOut = 0;
    };
    explicit RendezvousTask(Shared& shared) : m_shared(shared) {}
    void Process() override {
        std::unique_lock<std::mutex> lock(m_shared.mutex);
        ++m_shared.arrived;
        m_shared.cv.notify_all();
        if (!m_shared.cv.wait_for(lock, std::chrono::seconds(20),
                                  [&] { return m_shared.arrived >= m_shared.expected; })) {
            ++m_shared.timedOut;
        }
    }

private:
    Shared& m_shared;
};

TEST(QVRCThreadPoolTest, WorkersRunTasksConcurrently) {
    RendezvousTask::Shared shared;
    shared.expected = 3;
    RendezvousTask a(shared), b(shared), c(shared);
    QVRCThreadPool pool;
    ASSERT_TRUE(pool.Initalize(3, false));
    pool.AddToThreadPool(&a);
    pool.AddToThreadPool(&b);
    pool.AddToThreadPool(&c);
    EXPECT_TRUE(pool.JoinToThreadPool());
    EXPECT_EQ(3, shared.arrived);
    EXPECT_EQ(0, shared.timedOut);
}

TEST(QVRCThreadPoolTest, NullTaskStopsOneWorkerAndLaterTasksNeverRun) {
    Journal journal;
    auto tasks = MakeTasks(journal, 3);
    QVRCThreadPool pool;
    ASSERT_TRUE(pool.Initalize(1, false));
    pool.AddToThreadPool(tasks[0].get());
    EXPECT_TRUE(pool.AddToThreadPool(nullptr));
    pool.AddToThreadPool(tasks[1].get());
    pool.AddToThreadPool(tasks[2].get());
    EXPECT_TRUE(pool.JoinToThreadPool());
    EXPECT_EQ(std::vector<int>{0}, journal.Ids());
}

TEST(QVRCThreadPoolTest, ZeroThreadsInitialisesAndNeverRunsTasks) {
    Journal journal;
    auto tasks = MakeTasks(journal, 2);
    QVRCThreadPool pool;
    EXPECT_TRUE(pool.Initalize(0, false));
    EXPECT_TRUE(pool.IsInitialized());
    EXPECT_TRUE(pool.AddToThreadPool(tasks[0].get()));
    EXPECT_TRUE(pool.AddToThreadPool(tasks[1].get()));
    EXPECT_TRUE(pool.JoinToThreadPool());
    EXPECT_TRUE(pool.JoinToThreadPool());
    EXPECT_TRUE(journal.Ids().empty());
}

TEST(QVRCThreadPoolTest, UninitialisedPoolRefusesTasksAndJoin) {
    Journal journal;
    RecordingTask task(journal, 1);
    QVRCThreadPool pool;
    EXPECT_FALSE(pool.AddToThreadPool(&task));
    EXPECT_FALSE(pool.AddToThreadPool(nullptr));
    EXPECT_FALSE(pool.JoinToThreadPool());
    EXPECT_TRUE(pool.Initalize(1, false));
    EXPECT_TRUE(pool.JoinToThreadPool());
    EXPECT_TRUE(journal.Ids().empty());
}

TEST(QVRCThreadPoolTest, SecondInitaliseIsRefusedAndSecondJoinReturnsTrue) {
    Journal journal;
    auto tasks = MakeTasks(journal, 1);
    QVRCThreadPool pool;
    ASSERT_TRUE(pool.Initalize(2, false));
    EXPECT_FALSE(pool.Initalize(3, false));
    EXPECT_EQ(2u, pool.GetThreadCount());
    pool.AddToThreadPool(tasks[0].get());
    EXPECT_TRUE(pool.JoinToThreadPool());
    EXPECT_TRUE(pool.JoinToThreadPool());
    EXPECT_EQ(std::vector<int>{0}, journal.Ids());
}

TEST(QVRCThreadPoolTest, RaisedPriorityRequestLeavesWorkersAtNormalPriority) {
    Journal journal;
    auto tasks = MakeTasks(journal, 2);
    QVRCThreadPool pool;
    ASSERT_TRUE(pool.Initalize(2, true));
    for (auto& task : tasks) pool.AddToThreadPool(task.get());
    ASSERT_TRUE(pool.JoinToThreadPool());
    for (auto& task : tasks) {
        EXPECT_EQ(SCHED_OTHER, task->schedPolicy);
        EXPECT_EQ(0, task->schedPriority);
    }
}

TEST(QVRCThreadPoolTest, DestructorFinishesARunningPool) {
    Journal journal;
    auto tasks = MakeTasks(journal, 10);
    {
        QVRCThreadPool pool;
        ASSERT_TRUE(pool.Initalize(2, false));
        for (auto& task : tasks) pool.AddToThreadPool(task.get());
    }
    EXPECT_EQ(10u, journal.Ids().size());
}

class ThrowingTask : public IQVRThreadPoolTask {
public:
    void Process() override { throw std::runtime_error("task failed"); }
};

TEST(QVRCThreadPoolTest, ThrowingTaskEndsItsWorkerAndTheQueueStaysUnrun) {
    Journal journal;
    auto tasks = MakeTasks(journal, 1);
    ThrowingTask thrower;
    QVRCThreadPool pool;
    ASSERT_TRUE(pool.Initalize(1, false));
    pool.AddToThreadPool(&thrower);
    pool.AddToThreadPool(tasks[0].get());
    EXPECT_TRUE(pool.JoinToThreadPool());
    EXPECT_TRUE(journal.Ids().empty());
}

}  // namespace

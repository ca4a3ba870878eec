#ifndef CQVRTHREADPOOLQUEUE_H
#define CQVRTHREADPOOLQUEUE_H

#include <cstddef>
#include <deque>

#include "IQVRThreadPoolTask.h"
#include "QVRCMutex.h"
#include "QVRCThreadCondtionVariable.h"

// The pool's first-in-first-out task queue, shared by its workers. A null task
// is the stop signal for one worker. Tasks are not owned.
class CQVRThreadPoolQueue {
public:
    CQVRThreadPoolQueue();
    CQVRThreadPoolQueue(const CQVRThreadPoolQueue&) = delete;
    CQVRThreadPoolQueue& operator=(const CQVRThreadPoolQueue&) = delete;
    ~CQVRThreadPoolQueue();

    // Creates the mutex and the condition variable; false if either cannot be
    // allocated. Must succeed before any other call.
    bool Initalize();

    // Thread-safe. Appends the task (null included) and wakes one waiting worker.
    void AddTask(IQVRThreadPoolTask* task);
    // Thread-safe. Blocks while the queue is empty, then removes and returns the
    // front task.
    IQVRThreadPoolTask* NextTask();
    // Thread-safe. Tasks waiting to be taken.
    std::size_t GetPendingCount();

private:
    std::deque<IQVRThreadPoolTask*> m_tasks;
    QVRCMutex* m_pMutex;
    QVRCThreadCondtionVariable* m_pCondition;
};

#endif

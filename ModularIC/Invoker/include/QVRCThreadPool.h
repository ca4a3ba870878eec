#ifndef QVRCTHREADPOOL_H
#define QVRCTHREADPOOL_H

#include <vector>

#include "CQVRThreadPoolQueue.h"
#include "CQVRWorkerThread.h"
#include "IQVRThreadPoolTask.h"

// A fixed number of workers sharing one first-in-first-out queue. Started once,
// stopped once, never restarted. Tasks are borrowed: the caller frees them after
// JoinToThreadPool. All calls come from one controlling thread.
class QVRCThreadPool {
public:
    QVRCThreadPool();
    QVRCThreadPool(const QVRCThreadPool&) = delete;
    QVRCThreadPool& operator=(const QVRCThreadPool&) = delete;
    // Stops a pool that is still running (waits for every queued task).
    ~QVRCThreadPool();

    // Creates the queue and starts threadCount workers (0 is allowed: tasks are
    // then queued and never run). raisedPriority asks for priority 20, which is
    // requested before each worker starts and so changes nothing. False if
    // already initialised or the queue cannot be created.
    bool Initalize(unsigned long threadCount, bool raisedPriority);

    // Queues the task at the back; a null task stops one worker when it reaches
    // the front. False (nothing queued) before Initalize.
    bool AddToThreadPool(IQVRThreadPoolTask* task);

    // Waits until every task queued so far has run, then ends the workers.
    // Returns the initialised flag for a pool that is not initialised or has no
    // threads; true otherwise, and true again on a second call.
    bool JoinToThreadPool();

    // Queues one stop marker per worker, joins them in order and destroys them.
    void Deinitalize();

    bool IsInitialized() const { return m_initialized; }
    bool IsDeinitialized() const { return m_deinitialized; }
    unsigned long GetThreadCount() const { return m_threadCount; }
    // The workers whose threads could be created: with none, queued tasks never run.
    unsigned long GetStartedWorkerCount() const { return m_startedWorkers; }
    const std::vector<CQVRWorkerThread*>& GetWorkers() const { return m_workers; }

private:
    std::vector<CQVRWorkerThread*> m_workers;
    CQVRThreadPoolQueue* m_pQueue;
    bool m_initialized;
    bool m_deinitialized;
    unsigned long m_threadCount;
    unsigned long m_startedWorkers;
};

#endif

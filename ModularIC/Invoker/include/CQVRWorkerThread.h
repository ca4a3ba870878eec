#ifndef CQVRWORKERTHREAD_H
#define CQVRWORKERTHREAD_H

#include "CQVRThreadPoolQueue.h"
#include "QVRCThread.h"

// A pool thread: takes tasks from the queue in order and runs them until it
// takes a null task. Never deletes a task.
class CQVRWorkerThread : public QVRCThread {
public:
    // The queue is borrowed and must outlive the thread.
    explicit CQVRWorkerThread(CQVRThreadPoolQueue* queue);
    ~CQVRWorkerThread() override;

    // Returns 0 after taking a null task.
    int Run() override;

private:
    CQVRThreadPoolQueue* m_pQueue;
};

#endif

#include "CQVRWorkerThread.h"

CQVRWorkerThread::CQVRWorkerThread(CQVRThreadPoolQueue* queue) : m_pQueue(queue) {}

CQVRWorkerThread::~CQVRWorkerThread() {}

int CQVRWorkerThread::Run() {
    for (;;) {
        IQVRThreadPoolTask* task = m_pQueue->NextTask();
        if (task == nullptr) return 0;
        task->Process();
    }
}

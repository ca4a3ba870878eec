#include "QVRCThreadPool.h"

#include <new>

QVRCThreadPool::QVRCThreadPool()
    : m_pQueue(nullptr),
      m_initialized(false),
      m_deinitialized(false),
      m_threadCount(0),
      m_startedWorkers(0) {}

QVRCThreadPool::~QVRCThreadPool() {
    if (m_initialized && !m_deinitialized) Deinitalize();
    delete m_pQueue;
}

bool QVRCThreadPool::Initalize(unsigned long threadCount, bool raisedPriority) {
    if (m_initialized) return false;
    m_threadCount = threadCount;
    m_pQueue = new (std::nothrow) CQVRThreadPoolQueue();
    if (m_pQueue == nullptr || !m_pQueue->Initalize()) {
        delete m_pQueue;
        m_pQueue = nullptr;
        return false;
    }
    for (unsigned long i = 0; i < threadCount; ++i) {
        CQVRWorkerThread* worker = new (std::nothrow) CQVRWorkerThread(m_pQueue);
        if (worker == nullptr) continue;
        // Asked before the thread exists, so it is refused and changes nothing.
        if (raisedPriority) worker->SetPriority(20);
        m_workers.push_back(worker);
        if (worker->Execute()) ++m_startedWorkers;
    }
    m_initialized = true;
    return true;
}

bool QVRCThreadPool::AddToThreadPool(IQVRThreadPoolTask* task) {
    if (!m_initialized) return false;
    m_pQueue->AddTask(task);
    return true;
}

bool QVRCThreadPool::JoinToThreadPool() {
    if (!m_initialized || m_threadCount == 0) return m_initialized;
    if (m_deinitialized) return true;
    Deinitalize();
    return true;
}

void QVRCThreadPool::Deinitalize() {
    if (m_pQueue != nullptr) {
        for (size_t i = 0; i < m_workers.size(); ++i) m_pQueue->AddTask(nullptr);
    }
    for (CQVRWorkerThread* worker : m_workers) worker->End(0);
    for (CQVRWorkerThread* worker : m_workers) delete worker;
    m_workers.clear();
    m_deinitialized = true;
}

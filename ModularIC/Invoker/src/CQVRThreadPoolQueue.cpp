#include "CQVRThreadPoolQueue.h"

#include <climits>
#include <new>

CQVRThreadPoolQueue::CQVRThreadPoolQueue() : m_pMutex(nullptr), m_pCondition(nullptr) {}

CQVRThreadPoolQueue::~CQVRThreadPoolQueue() {
    delete m_pCondition;
    delete m_pMutex;
}

bool CQVRThreadPoolQueue::Initalize() {
    if (m_pMutex == nullptr) m_pMutex = new (std::nothrow) QVRCMutex();
    if (m_pCondition == nullptr) m_pCondition = new (std::nothrow) QVRCThreadCondtionVariable();
    return m_pMutex != nullptr && m_pCondition != nullptr;
}

void CQVRThreadPoolQueue::AddTask(IQVRThreadPoolTask* task) {
    QVRCMutexLock lock(*m_pMutex);
    m_tasks.push_back(task);
    m_pCondition->SignalConditionVariable();
}

IQVRThreadPoolTask* CQVRThreadPoolQueue::NextTask() {
    QVRCMutexLock lock(*m_pMutex);
    while (m_tasks.empty()) m_pCondition->WaitConditionVariable(m_pMutex, ULONG_MAX);
    IQVRThreadPoolTask* task = m_tasks.front();
    m_tasks.pop_front();
    return task;
}

std::size_t CQVRThreadPoolQueue::GetPendingCount() {
    QVRCMutexLock lock(*m_pMutex);
    return m_tasks.size();
}

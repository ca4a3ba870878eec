#include "QVRCThread.h"

#include <cxxabi.h>

#include <exception>

QVRCThread::QVRCThread()
    : m_exitCode(10),
      m_started(false),
      m_thread(0),
      m_ended(true),
      m_runStatus(kStatusNotRun),
      m_joined(false) {}

QVRCThread::~QVRCThread() {}

void QVRCThread::ThreadInitialize() {}

void QVRCThread::ThreadUnInitialize() {}

bool QVRCThread::Execute() {
    if (m_started) return false;
    m_ended = false;
    if (pthread_create(&m_thread, nullptr, &QVRCThread::ThreadRun, this) != 0) {
        m_ended = true;
        return false;
    }
    m_started = true;
    return true;
}

void* QVRCThread::ThreadRun(void* self) {
    QVRCThread* thread = static_cast<QVRCThread*>(self);
    pthread_setcancelstate(PTHREAD_CANCEL_ENABLE, nullptr);
    pthread_setcanceltype(PTHREAD_CANCEL_ASYNCHRONOUS, nullptr);

    bool initialized = false;
    try {
        thread->ThreadInitialize();
        initialized = true;
    } catch (abi::__forced_unwind&) {
        throw;  // cancellation unwinds through here and must not be swallowed
    } catch (...) {
        thread->m_runStatus = kStatusThrew;
    }
    if (initialized) {
        try {
            thread->m_runStatus = thread->Run() == 0 ? kStatusRunSucceeded : kStatusRunFailed;
        } catch (abi::__forced_unwind&) {
            throw;
        } catch (...) {
            thread->m_runStatus = kStatusThrew;
        }
    }
    try {
        thread->ThreadUnInitialize();
    } catch (abi::__forced_unwind&) {
        throw;
    } catch (const std::exception&) {
    }
    return nullptr;
}

bool QVRCThread::End(unsigned int exitCode) {
    if (m_ended) return false;
    m_exitCode = static_cast<int32_t>(exitCode);
    m_ended = true;
    if (m_joined) return false;
    m_joined = true;
    return pthread_join(m_thread, nullptr) == 0;
}

bool QVRCThread::Kill(unsigned int exitCode) {
    if (m_ended || m_joined) return false;
    pthread_cancel(m_thread);
    void* result = nullptr;
    m_joined = true;
    if (pthread_join(m_thread, &result) != 0 || result != PTHREAD_CANCELED) return false;
    m_ended = true;
    m_exitCode = static_cast<int32_t>(exitCode);
    return true;
}

bool QVRCThread::SetPriority(int priority) {
    if (m_ended) return false;
    int policy = 0;
    sched_param param{};
    if (pthread_getschedparam(m_thread, &policy, &param) == 0) {
        param.sched_priority = priority;
        pthread_setschedparam(m_thread, policy, &param);
    }
    return true;
}

bool QVRCThread::DetachThread() {
    if (m_ended) return false;
    m_ended = true;
    if (m_joined) return false;
    m_joined = true;
    return pthread_detach(m_thread) == 0;
}

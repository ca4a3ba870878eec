#ifndef QVRCMUTEX_H
#define QVRCMUTEX_H

#include <pthread.h>

// One POSIX mutex with default attributes.
class QVRCMutex {
public:
    QVRCMutex();
    QVRCMutex(const QVRCMutex&) = delete;
    QVRCMutex& operator=(const QVRCMutex&) = delete;
    ~QVRCMutex();

    void Lock();
    void Unlock();
    pthread_mutex_t* GetHandle() { return &m_mutex; }

private:
    pthread_mutex_t m_mutex;
};

// Holds a QVRCMutex for the life of a scope.
class QVRCMutexLock {
public:
    explicit QVRCMutexLock(QVRCMutex& mutex) : m_mutex(mutex) { m_mutex.Lock(); }
    QVRCMutexLock(const QVRCMutexLock&) = delete;
    QVRCMutexLock& operator=(const QVRCMutexLock&) = delete;
    ~QVRCMutexLock() { m_mutex.Unlock(); }

private:
    QVRCMutex& m_mutex;
};

#endif

#ifndef QVRCTHREADCONDTIONVARIABLE_H
#define QVRCTHREADCONDTIONVARIABLE_H

#include <pthread.h>

#include "QVRCMutex.h"

// One POSIX condition variable.
class QVRCThreadCondtionVariable {
public:
    QVRCThreadCondtionVariable();
    QVRCThreadCondtionVariable(const QVRCThreadCondtionVariable&) = delete;
    QVRCThreadCondtionVariable& operator=(const QVRCThreadCondtionVariable&) = delete;
    ~QVRCThreadCondtionVariable();

    // Wakes one waiter, if any.
    void SignalConditionVariable();

    // Waits with mutex, which the caller holds, until signalled (spurious wake-ups
    // possible: callers re-check their predicate). The time-out is ignored: every
    // wait is unbounded, and callers pass the largest value.
    void WaitConditionVariable(QVRCMutex* mutex, unsigned long timeout);

private:
    pthread_cond_t m_cond;
};

#endif

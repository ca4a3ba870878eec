#ifndef BQMLOCK_H
#define BQMLOCK_H

#include <pthread.h>

// One non-recursive POSIX mutex. Not copyable.
class BQMLock {
public:
    BQMLock();
    ~BQMLock();
    BQMLock(const BQMLock&) = delete;
    BQMLock& operator=(const BQMLock&) = delete;

    // Blocks until the calling thread holds the mutex. Locking it twice from one thread deadlocks.
    void Lock();
    void Unlock();
    // For waiting on a condition variable with it.
    pthread_mutex_t* GetHandle() { return &mMutex; }

private:
    pthread_mutex_t mMutex;
};

// Holds a BQMLock for the lifetime of the guard.
class BQMLockGuard {
public:
    explicit BQMLockGuard(BQMLock& lock) : mLock(lock) { mLock.Lock(); }
    ~BQMLockGuard() { mLock.Unlock(); }
    BQMLockGuard(const BQMLockGuard&) = delete;
    BQMLockGuard& operator=(const BQMLockGuard&) = delete;

private:
    BQMLock& mLock;
};

#endif

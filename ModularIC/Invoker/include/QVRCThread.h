#ifndef QVRCTHREAD_H
#define QVRCTHREAD_H

#include <pthread.h>

#include <cstdint>

// A joinable POSIX thread that runs Run() once. The thread is cancellable with
// asynchronous cancellation so that Kill can stop it anywhere.
//
// The owner must End, Kill or detach a started thread before destroying the
// object: the destructor does not wait for it.
class QVRCThread {
public:
    // Run statuses.
    static constexpr int32_t kStatusNotRun = 0;
    static constexpr int32_t kStatusRunSucceeded = 1;  // Run returned 0
    static constexpr int32_t kStatusRunFailed = 2;     // Run returned non-zero
    static constexpr int32_t kStatusThrew = 3;         // ThreadInitialize or Run threw

    QVRCThread();
    QVRCThread(const QVRCThread&) = delete;
    QVRCThread& operator=(const QVRCThread&) = delete;

    // The thread's work; its result sets the run status.
    virtual int Run() = 0;
    // Called on the new thread before Run; a throw skips Run (status 3).
    virtual void ThreadInitialize();
    // Called on the thread after Run; a standard exception from it is swallowed.
    virtual void ThreadUnInitialize();
    virtual ~QVRCThread();

    // Starts the thread. False if already started or the thread cannot be created.
    virtual bool Execute();
    // Cancels and joins the thread. True only when the thread ended by that
    // cancellation; false if it has ended already (or never started).
    virtual bool Kill(unsigned int exitCode);
    // Records the exit code and joins the thread. False if it has ended already
    // (or never started); otherwise whether the join succeeded.
    virtual bool End(unsigned int exitCode);

    // Rewrites the thread's scheduling priority under its current policy. False
    // for a thread that has ended or not started (nothing changes); otherwise
    // true once it has tried, whatever the system answered.
    bool SetPriority(int priority);
    // Detaches the thread. False if it has ended already.
    bool DetachThread();
    bool IsThreadEnded() const { return m_ended; }

    bool IsStarted() const { return m_started; }
    // Valid after End or Kill.
    int32_t GetRunStatus() const { return m_runStatus; }
    int32_t GetExitCode() const { return m_exitCode; }

protected:
    static void* ThreadRun(void* self);

private:
    int32_t m_exitCode;
    bool m_started;
    pthread_t m_thread;
    bool m_ended;
    int32_t m_runStatus;
    bool m_joined;  // a thread may be joined only once, even when Kill found it already finished
};

#endif

#ifndef IQVRTHREADPOOLTASK_H
#define IQVRTHREADPOOLTASK_H

// A unit of work run by one pool worker. The pool never owns or deletes a task:
// whoever queues it frees it after the pool has been joined.
class IQVRThreadPoolTask {
public:
    virtual ~IQVRThreadPoolTask() = default;
    // Runs on a worker thread. An exception ends that worker (run status 3).
    virtual void Process() = 0;
};

#endif

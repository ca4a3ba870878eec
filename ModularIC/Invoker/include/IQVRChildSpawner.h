#ifndef IQVRCHILDSPAWNER_H
#define IQVRCHILDSPAWNER_H

#include <sys/types.h>

#include <cstddef>
#include <string>

// A started shell child: its process id (also its process group id) and the
// read end of the pipe on its standard output.
struct QVRChildHandle {
    pid_t pid = -1;
    int fd = -1;
};

// The operating-system calls for one child with piped output: start, wait for
// data, read, kill and reap. CQVRPosixChildSpawner is the real one; tests pass
// a fake to CQVRExecCommand. Implementations are shared between threads and
// must keep no per-child state.
class IQVRChildSpawner {
public:
    virtual ~IQVRChildSpawner() = default;

    // Runs command through "/bin/sh -c" in the current directory, in a new process
    // group, with standard input from /dev/null, standard output into a
    // close-on-exec pipe, an empty signal mask and default signal dispositions.
    // False (child untouched, error set) when it cannot be started.
    virtual bool Start(const std::string& command, QVRChildHandle& child, std::string& error) = 0;
    // Makes reads on fd return at once when no data is there. False on failure.
    virtual bool SetNonBlocking(int fd) = 0;
    // Waits at most timeoutMs for fd to become readable (or reach end of file or
    // an error). 1 readable, 0 timed out, -1 interrupted or failed.
    virtual int WaitReadable(int fd, int timeoutMs) = 0;
    // read(2): bytes read, 0 at end of file, -1 with errno set.
    virtual long Read(int fd, char* buffer, std::size_t size) = 0;
    // Closes the read end.
    virtual void CloseReadEnd(int fd) = 0;
    // Sends SIGKILL to every process of the group.
    virtual void KillProcessGroup(pid_t pgid) = 0;
    // Waits at most timeoutMs for pid to exit and reaps it: true with its wait
    // status (or -1 when it can no longer be waited for); false while it runs.
    virtual bool WaitExit(pid_t pid, int timeoutMs, int& status) = 0;
    // Waits for pid to exit and reaps it. Its wait status, or -1.
    virtual int Reap(pid_t pid) = 0;
    // A monotonic clock in milliseconds, for the time budget.
    virtual long long NowMilliseconds() = 0;
    // Sleeps, so that a wait that keeps failing does not spin.
    virtual void Pause(int milliseconds) = 0;
};

#endif

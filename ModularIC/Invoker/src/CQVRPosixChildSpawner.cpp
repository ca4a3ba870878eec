#include "CQVRPosixChildSpawner.h"

#include <fcntl.h>
#include <poll.h>
#include <signal.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <ctime>

#include "CQVRChildRegistry.h"

extern char** environ;

namespace {

// Owns a descriptor until released.
class ScopedFd {
public:
    explicit ScopedFd(int fd = -1) : m_fd(fd) {}
    ScopedFd(const ScopedFd&) = delete;
    ScopedFd& operator=(const ScopedFd&) = delete;
    ~ScopedFd() {
        if (m_fd >= 0) close(m_fd);
    }
    int Get() const { return m_fd; }
    int Release() {
        int fd = m_fd;
        m_fd = -1;
        return fd;
    }
    void Reset() {
        if (m_fd >= 0) close(m_fd);
        m_fd = -1;
    }

private:
    int m_fd;
};

const int kMaxPauseMs = 50;

// Waits (or with WNOHANG only looks) for pid to exit without reaping it: the
// registry reaps, so that an interrupt never signals a group id already freed.
// 1 exited, 0 still running, -1 cannot be waited for.
int WaitForExit(pid_t pid, int flags) {
    for (;;) {
        siginfo_t info;
        info.si_pid = 0;
        if (waitid(P_PID, static_cast<id_t>(pid), &info, WEXITED | WNOWAIT | flags) == 0)
            return info.si_pid == 0 ? 0 : 1;
        if (errno != EINTR) return -1;
    }
}

// Reaps pid if it has exited: true with its wait status (or -1 when it can no
// longer be waited for); false while it runs.
bool TryReap(pid_t pid, int& status) {
    const int exited = WaitForExit(pid, WNOHANG);
    if (exited == 0) return false;
    status = exited > 0 ? CQVRChildRegistry::Instance().ReapExited(pid) : -1;
    return true;
}

void Sleep(int milliseconds) {
    timespec wait;
    wait.tv_sec = milliseconds / 1000;
    wait.tv_nsec = static_cast<long>(milliseconds % 1000) * 1000000L;
    while (nanosleep(&wait, &wait) != 0 && errno == EINTR) {
    }
}

std::string ErrorText(const char* call, int error) { return std::string(call) + ": " + std::strerror(error); }

// Blocks every signal for the life of a scope, so that no handler of the
// collector runs in a child between fork and exec.
class ScopedSignalBlock {
public:
    ScopedSignalBlock() {
        sigset_t all;
        sigfillset(&all);
        pthread_sigmask(SIG_SETMASK, &all, &m_previous);
    }
    ~ScopedSignalBlock() { pthread_sigmask(SIG_SETMASK, &m_previous, nullptr); }

private:
    sigset_t m_previous;
};

// Moves a descriptor above the standard ones so dup2 onto 0 and 1 cannot clobber it.
int AboveStandard(int fd) { return fd > STDERR_FILENO ? fd : fcntl(fd, F_DUPFD_CLOEXEC, STDERR_FILENO + 1); }

// Runs in the child of vfork: async-signal-safe calls only, nothing of the
// parent's memory written. Never returns.
[[noreturn]] void ExecShell(int outFd, int nullFd, int errorFd, char* const argv[]) {
    // Its own process group lets a time-out kill the module and everything it
    // started, whatever the shell forked in between.
    setpgid(0, 0);
    // Ignored signals survive exec: a module must not inherit the collector's.
    struct sigaction defaultAction;
    std::memset(&defaultAction, 0, sizeof(defaultAction));
    defaultAction.sa_handler = SIG_DFL;
    for (int sig = 1; sig < NSIG; ++sig) {
        if (sig != SIGKILL && sig != SIGSTOP) sigaction(sig, &defaultAction, nullptr);
    }
    outFd = AboveStandard(outFd);
    nullFd = AboveStandard(nullFd);
    // A module reading standard input must not hang on, or steal, the collector's.
    if (outFd < 0 || nullFd < 0 || dup2(outFd, STDOUT_FILENO) < 0 || dup2(nullFd, STDIN_FILENO) < 0) {
        int error = errno;
        if (write(errorFd, &error, sizeof(error)) < 0) {
        }
        _exit(127);
    }
    sigset_t none;
    sigemptyset(&none);
    sigprocmask(SIG_SETMASK, &none, nullptr);
    execve("/bin/sh", argv, environ);
    int error = errno;
    if (write(errorFd, &error, sizeof(error)) < 0) {
    }
    _exit(127);
}

// The child borrows the collector's memory until its exec instead of getting a
// copy of its page tables (which every thread's next writes would then pay
// for): each start holds the start lock for less, so modules start back to
// back. Its own function, so that no local of the caller lives across vfork.
__attribute__((noinline)) pid_t SpawnShell(int outFd, int nullFd, int errorFd, char* const argv[]) {
    const pid_t pid = vfork();
    if (pid == 0) ExecShell(outFd, nullFd, errorFd, argv);
    return pid;
}

}  // namespace

CQVRPosixChildSpawner& CQVRPosixChildSpawner::Instance() {
    static CQVRPosixChildSpawner instance;
    return instance;
}

bool CQVRPosixChildSpawner::Start(const std::string& command, QVRChildHandle& child, std::string& error) {
    int fds[2];
    if (pipe2(fds, O_CLOEXEC) != 0) {
        error = ErrorText("pipe2", errno);
        return false;
    }
    ScopedFd readEnd(fds[0]);
    ScopedFd writeEnd(fds[1]);
    // Reports a failed exec from the child; closes by itself on a good one.
    if (pipe2(fds, O_CLOEXEC) != 0) {
        error = ErrorText("pipe2", errno);
        return false;
    }
    ScopedFd errorRead(fds[0]);
    ScopedFd errorWrite(fds[1]);
    ScopedFd devNull(open("/dev/null", O_RDONLY | O_CLOEXEC));
    if (devNull.Get() < 0) {
        error = ErrorText("open /dev/null", errno);
        return false;
    }

    std::string shellCommand = command;
    char shellName[] = "sh";
    char flag[] = "-c";
    char* const argv[] = {shellName, flag, &shellCommand[0], nullptr};

    CQVRChildRegistry& registry = CQVRChildRegistry::Instance();
    if (!registry.BeginStart()) {
        error = "the collection is being ended";
        return false;
    }
    pid_t pid = -1;
    {
        ScopedSignalBlock block;
        pid = SpawnShell(writeEnd.Get(), devNull.Get(), errorWrite.Get(), argv);
    }
    // Set here too: the group must exist before anyone can signal it, whether
    // or not the child has got to its own setpgid yet.
    if (pid > 0) setpgid(pid, pid);
    registry.EndStart(pid);
    if (pid < 0) {
        error = ErrorText("vfork", errno);
        return false;
    }
    // Only the child may hold the write ends, or end of file never comes.
    writeEnd.Reset();
    errorWrite.Reset();

    int childError = 0;
    ssize_t got;
    do {
        got = read(errorRead.Get(), &childError, sizeof(childError));
    } while (got < 0 && errno == EINTR);
    if (got > 0) {
        error = ErrorText("exec /bin/sh", childError);
        registry.ReapExited(pid);
        return false;
    }
    child.pid = pid;
    child.fd = readEnd.Release();
    return true;
}

bool CQVRPosixChildSpawner::SetNonBlocking(int fd) {
    int flags = fcntl(fd, F_GETFL);
    if (flags < 0) return false;
    return fcntl(fd, F_SETFL, flags | O_NONBLOCK) == 0;
}

int CQVRPosixChildSpawner::WaitReadable(int fd, int timeoutMs) {
    pollfd entry{};
    entry.fd = fd;
    entry.events = POLLIN;
    int rc = poll(&entry, 1, timeoutMs < 0 ? 0 : timeoutMs);
    if (rc < 0) return -1;
    return rc == 0 ? 0 : 1;
}

long CQVRPosixChildSpawner::Read(int fd, char* buffer, std::size_t size) {
    return static_cast<long>(read(fd, buffer, size));
}

void CQVRPosixChildSpawner::CloseReadEnd(int fd) {
    if (fd >= 0) close(fd);
}

void CQVRPosixChildSpawner::KillProcessGroup(pid_t pgid) {
    if (pgid > 0) kill(-pgid, SIGKILL);
}

int CQVRPosixChildSpawner::Reap(pid_t pid) {
    return WaitForExit(pid, 0) > 0 ? CQVRChildRegistry::Instance().ReapExited(pid) : -1;
}

bool CQVRPosixChildSpawner::WaitExit(pid_t pid, int timeoutMs, int& status) {
    if (TryReap(pid, status)) return true;
    if (timeoutMs <= 0) return false;
    // A pidfd wakes us the moment the child exits; without one, poll with backoff.
    ScopedFd pidFd(static_cast<int>(syscall(SYS_pidfd_open, pid, 0)));
    if (pidFd.Get() >= 0) {
        pollfd entry{};
        entry.fd = pidFd.Get();
        entry.events = POLLIN;
        const long long deadline = NowMilliseconds() + timeoutMs;
        for (;;) {
            const long long left = deadline - NowMilliseconds();
            const int rc = poll(&entry, 1, left < 0 ? 0 : static_cast<int>(left));
            if (rc < 0 && errno == EINTR) continue;
            return TryReap(pid, status);
        }
    }
    const long long deadline = NowMilliseconds() + timeoutMs;
    int pauseMs = 1;
    while (!TryReap(pid, status)) {
        const long long left = deadline - NowMilliseconds();
        if (left <= 0) return false;
        Sleep(static_cast<int>(left < pauseMs ? left : pauseMs));
        if (pauseMs < kMaxPauseMs) pauseMs *= 2;
    }
    return true;
}

long long CQVRPosixChildSpawner::NowMilliseconds() {
    timespec now{};
    clock_gettime(CLOCK_MONOTONIC, &now);
    return static_cast<long long>(now.tv_sec) * 1000LL + now.tv_nsec / 1000000L;
}

void CQVRPosixChildSpawner::Pause(int milliseconds) { Sleep(milliseconds); }

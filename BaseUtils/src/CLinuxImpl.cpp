#include "CLinuxImpl.h"

#include <fcntl.h>
#include <signal.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <ctime>
#include <vector>

extern char** environ;

namespace {

// Starts "/bin/sh -c command" with an empty signal mask and default signal
// dispositions: the collector blocks its termination signals for its own
// handler thread, and the command must not inherit that. Unlike system(), the
// caller's signal dispositions are left alone, so a signal arriving while a
// command runs is not lost. stdoutFd, when not -1, becomes the command's
// standard output. The child's pid, or -1.
pid_t StartShell(const std::string& command, bool discardStderr, int stdoutFd) {
    posix_spawnattr_t attributes;
    posix_spawn_file_actions_t actions;
    if (posix_spawnattr_init(&attributes) != 0) return -1;
    if (posix_spawn_file_actions_init(&actions) != 0) {
        posix_spawnattr_destroy(&attributes);
        return -1;
    }
    sigset_t none, all;
    sigemptyset(&none);
    sigfillset(&all);
    posix_spawnattr_setsigmask(&attributes, &none);
    posix_spawnattr_setsigdefault(&attributes, &all);
    posix_spawnattr_setflags(&attributes, POSIX_SPAWN_SETSIGMASK | POSIX_SPAWN_SETSIGDEF);
    if (stdoutFd >= 0) posix_spawn_file_actions_adddup2(&actions, stdoutFd, STDOUT_FILENO);
    if (discardStderr) posix_spawn_file_actions_addopen(&actions, STDERR_FILENO, "/dev/null", O_WRONLY, 0);

    const char* argv[] = {"sh", "-c", command.c_str(), nullptr};
    pid_t pid = -1;
    if (posix_spawn(&pid, "/bin/sh", &actions, &attributes, const_cast<char* const*>(argv), environ) != 0)
        pid = -1;
    posix_spawn_file_actions_destroy(&actions);
    posix_spawnattr_destroy(&attributes);
    return pid;
}

int WaitForShell(pid_t pid) {
    int status = -1;
    while (waitpid(pid, &status, 0) < 0) {
        if (errno != EINTR) return -1;
    }
    return status;
}

}  // namespace

std::string CLinuxImpl::GetCurrentDirectory() {
    std::vector<char> buffer(4096);
    for (;;) {
        if (getcwd(buffer.data(), buffer.size()) != nullptr) return std::string(buffer.data());
        if (errno != ERANGE) return std::string();
        buffer.resize(buffer.size() * 2);
    }
}

bool CLinuxImpl::SetCurrentDirectory(const std::string& dir) { return chdir(dir.c_str()) == 0; }

int CLinuxImpl::RunShellCommand(const std::string& command, bool discardStderr) {
    const pid_t pid = StartShell(command, discardStderr, -1);
    return pid < 0 ? -1 : WaitForShell(pid);
}

int CLinuxImpl::ReadShellOutput(const std::string& command, std::string& output) {
    output.clear();
    int fds[2];
    if (pipe2(fds, O_CLOEXEC) != 0) return -1;
    const pid_t pid = StartShell(command, true, fds[1]);
    close(fds[1]);
    if (pid < 0) {
        close(fds[0]);
        return -1;
    }
    char buffer[4096];
    for (;;) {
        const ssize_t got = read(fds[0], buffer, sizeof buffer);
        if (got > 0) {
            output.append(buffer, static_cast<std::size_t>(got));
        } else if (got == 0 || errno != EINTR) {
            break;
        }
    }
    close(fds[0]);
    return WaitForShell(pid);
}

void CLinuxImpl::SleepMilliseconds(unsigned long milliseconds) {
    struct timespec wait;
    wait.tv_sec = static_cast<time_t>(milliseconds / 1000);
    wait.tv_nsec = static_cast<long>(milliseconds % 1000) * 1000000L;
    while (nanosleep(&wait, &wait) != 0 && errno == EINTR) {
    }
}

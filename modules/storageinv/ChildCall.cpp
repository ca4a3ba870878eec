#include "ChildCall.h"

#include <fcntl.h>
#include <poll.h>
#include <signal.h>
#include <sys/wait.h>
#include <time.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>

namespace svm {
namespace {

struct Descriptor {
    int fd = -1;
    ~Descriptor() {
        if (fd >= 0) ::close(fd);
    }
};

long long NowMs() {
    struct timespec now;
    ::clock_gettime(CLOCK_MONOTONIC, &now);
    return now.tv_sec * 1000LL + now.tv_nsec / 1000000;
}

[[noreturn]] void RunChild(const std::function<std::vector<uint8_t>()>& call, int pipeEnd) {
    // Descriptor 3 carries the answer; 0 to 2 become /dev/null, everything else is closed.
    int out = ::fcntl(pipeEnd, F_DUPFD, 3);
    if (out < 0) ::_exit(1);
    const int null = ::open("/dev/null", O_RDWR);
    for (int fd = 0; fd <= 2; ++fd) {
        if (null >= 0)
            ::dup2(null, fd);
        else
            ::close(fd);
    }
    if (out != 3) out = ::dup2(out, 3);
    if (out != 3) ::_exit(1);
    if (::close_range(4, ~0U, 0) != 0)
        for (int fd = 4; fd < 4096; ++fd) ::close(fd);
    const std::vector<uint8_t> bytes = call();
    size_t done = 0;
    while (done < bytes.size()) {
        const ssize_t n = ::write(out, bytes.data() + done, bytes.size() - done);
        if (n < 0 && errno == EINTR) continue;
        if (n <= 0) ::_exit(1);
        done += static_cast<size_t>(n);
    }
    ::_exit(0);
}

}  // namespace

int CallInChild(const std::function<std::vector<uint8_t>()>& call, unsigned timeoutMs,
                std::vector<uint8_t>& result, std::string& error) {
    int fds[2];
    if (::pipe2(fds, O_CLOEXEC) != 0) {
        const int err = errno;
        error = std::string("pipe2: ") + std::strerror(err);
        return err;
    }
    Descriptor in;
    in.fd = fds[0];
    const pid_t pid = ::fork();
    if (pid < 0) {
        const int err = errno;
        ::close(fds[1]);
        error = std::string("fork: ") + std::strerror(err);
        return err;
    }
    if (pid == 0) RunChild(call, fds[1]);
    ::close(fds[1]);
    result.clear();
    const long long deadline = NowMs() + timeoutMs;
    for (;;) {
        const long long left = deadline - NowMs();
        struct pollfd p = {in.fd, POLLIN, 0};
        const int ready = left > 0 ? ::poll(&p, 1, static_cast<int>(left)) : 0;
        if (ready < 0 && errno == EINTR) continue;
        if (ready < 0) {
            const int err = errno;
            ::kill(pid, SIGKILL);
            ::waitpid(pid, nullptr, WNOHANG);
            error = std::string("poll: ") + std::strerror(err);
            return err;
        }
        if (ready == 0) {
            ::kill(pid, SIGKILL);
            ::waitpid(pid, nullptr, WNOHANG);
            error = "no answer within " + std::to_string(timeoutMs) + " ms";
            return ETIMEDOUT;
        }
        uint8_t buffer[4096];
        const ssize_t n = ::read(in.fd, buffer, sizeof buffer);
        if (n < 0 && errno == EINTR) continue;
        if (n < 0) {
            const int err = errno;
            ::kill(pid, SIGKILL);
            ::waitpid(pid, nullptr, WNOHANG);
            error = std::string("read: ") + std::strerror(err);
            return err;
        }
        if (n == 0) break;  // the child has closed its end: it is exiting
        result.insert(result.end(), buffer, buffer + n);
    }
    int status = 0;
    pid_t waited;
    do {
        waited = ::waitpid(pid, &status, 0);
    } while (waited < 0 && errno == EINTR);
    if (waited < 0) {
        const int err = errno;
        error = std::string("waitpid: ") + std::strerror(err);
        return err;
    }
    if (!WIFEXITED(status) || WEXITSTATUS(status) != 0) {
        error = WIFSIGNALED(status)
                    ? std::string("child killed by signal ") + std::to_string(WTERMSIG(status))
                    : "child exited with status " + std::to_string(WEXITSTATUS(status));
        return ECHILD;
    }
    return 0;
}

}  // namespace svm

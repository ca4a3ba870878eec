#include "LinuxIPMIDeviceIO.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/ioctl.h>
#include <sys/select.h>
#include <unistd.h>

#include <cerrno>
#include <ctime>

namespace {

long long NowMicroseconds() {
    struct timespec now;
    clock_gettime(CLOCK_MONOTONIC, &now);
    return static_cast<long long>(now.tv_sec) * 1000000LL + now.tv_nsec / 1000;
}

// select cannot hold descriptors of FD_SETSIZE or more; poll can.
int PollReadable(int fd, long long timeoutMicroseconds, bool* fdReady) {
    struct pollfd entry;
    entry.fd = fd;
    entry.events = POLLIN;
    entry.revents = 0;
    const long long deadline = NowMicroseconds() + timeoutMicroseconds;
    for (;;) {
        long long left = deadline - NowMicroseconds();
        if (left < 0) left = 0;
        int result = poll(&entry, 1, static_cast<int>((left + 999) / 1000));
        if (result < 0 && errno == EINTR) continue;
        if (result > 0) *fdReady = (entry.revents & (POLLIN | POLLERR | POLLHUP)) != 0;
        return result;
    }
}

}  // namespace

IIPMIDeviceIO& IIPMIDeviceIO::Real() {
    static LinuxIPMIDeviceIO device;
    return device;
}

int LinuxIPMIDeviceIO::Open(const char* path) {
    int fd;
    do {
        fd = open(path, O_RDWR | O_CLOEXEC);
    } while (fd < 0 && errno == EINTR);
    return fd;
}

int LinuxIPMIDeviceIO::Ioctl(int fd, unsigned long request, void* argument) {
    int result;
    do {
        result = ioctl(fd, request, argument);
    } while (result < 0 && errno == EINTR);
    return result;
}

int LinuxIPMIDeviceIO::WaitReadable(int fd, struct timeval* timeout, bool* fdReady) {
    *fdReady = false;
    if (fd < 0) {
        errno = EBADF;
        return -1;
    }
    const long long total = static_cast<long long>(timeout->tv_sec) * 1000000LL + timeout->tv_usec;
    if (fd >= FD_SETSIZE) return PollReadable(fd, total, fdReady);

    // The kernel writes the time left back into the timeout, and the set is
    // rewritten too: both are rebuilt for every wait.
    const long long deadline = NowMicroseconds() + total;
    for (;;) {
        long long left = deadline - NowMicroseconds();
        if (left < 0) left = 0;
        struct timeval wait;
        wait.tv_sec = static_cast<time_t>(left / 1000000LL);
        wait.tv_usec = static_cast<suseconds_t>(left % 1000000LL);
        fd_set readSet;
        FD_ZERO(&readSet);
        FD_SET(fd, &readSet);
        int result = select(fd + 1, &readSet, nullptr, nullptr, &wait);
        if (result < 0 && errno == EINTR) continue;
        *timeout = wait;
        if (result > 0) *fdReady = FD_ISSET(fd, &readSet) != 0;
        return result;
    }
}

int LinuxIPMIDeviceIO::Close(int fd) {
    // Linux frees the descriptor even when close is interrupted: never retry.
    return close(fd);
}

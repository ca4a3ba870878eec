#ifndef IIPMIDEVICEIO_H
#define IIPMIDEVICEIO_H

#include <sys/time.h>

// The operating-system calls the IPMI processor makes on the device node. The
// real implementation talks to the kernel; the processor takes one in its
// constructor, so tests hand in a fake. Every call reports failure as -1 with
// errno set.
class IIPMIDeviceIO {
public:
    virtual ~IIPMIDeviceIO() {}
    // Opens path for reading and writing, close-on-exec. The descriptor or -1.
    virtual int Open(const char* path) = 0;
    virtual int Ioctl(int fd, unsigned long request, void* argument) = 0;
    // Waits at most *timeout for fd to become readable. Returns -1 on error, 0
    // on time-out, otherwise the number of ready descriptors, with *fdReady
    // telling whether fd is one of them. *timeout may be changed.
    virtual int WaitReadable(int fd, struct timeval* timeout, bool* fdReady) = 0;
    virtual int Close(int fd) = 0;

    // The kernel's device.
    static IIPMIDeviceIO& Real();
};

#endif

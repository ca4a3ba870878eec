#ifndef LINUXIPMIDEVICEIO_H
#define LINUXIPMIDEVICEIO_H

#include "IIPMIDeviceIO.h"

// The kernel's IPMI device: open, ioctl, select (poll for descriptors that
// select cannot hold) and close, each retried on EINTR.
class LinuxIPMIDeviceIO : public IIPMIDeviceIO {
public:
    int Open(const char* path) override;
    int Ioctl(int fd, unsigned long request, void* argument) override;
    int WaitReadable(int fd, struct timeval* timeout, bool* fdReady) override;
    int Close(int fd) override;
};

#endif

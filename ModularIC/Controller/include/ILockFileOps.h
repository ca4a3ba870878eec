#ifndef ILOCKFILEOPS_H
#define ILOCKFILEOPS_H

#include <fcntl.h>
#include <sys/stat.h>
#include <sys/types.h>

// The file calls behind CLockManager. The real ones go to the operating
// system; tests pass a fake to fail or observe them. Each returns what the
// system call returns, with errno set on failure.
class ILockFileOps {
public:
    virtual ~ILockFileOps() = default;
    virtual int Open(const char* path, int flags, mode_t mode) = 0;
    // fcntl(fd, command, lock) for the record-lock commands.
    virtual int Lock(int fd, int command, struct flock* lock) = 0;
    virtual int Close(int fd) = 0;
    virtual int Fstat(int fd, struct stat* info) = 0;
    virtual int Stat(const char* path, struct stat* info) = 0;
    virtual int Unlink(const char* path) = 0;
    virtual pid_t GetProcessId() = 0;
};

#endif

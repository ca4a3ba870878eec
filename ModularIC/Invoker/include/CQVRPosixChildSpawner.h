#ifndef CQVRPOSIXCHILDSPAWNER_H
#define CQVRPOSIXCHILDSPAWNER_H

#include "IQVRChildSpawner.h"

// The real child calls: fork and exec of /bin/sh, pipe2, poll (no descriptor
// number limit), read, kill, pidfd and waitpid. Stateless and thread-safe.
class CQVRPosixChildSpawner : public IQVRChildSpawner {
public:
    // The process-wide instance used by default.
    static CQVRPosixChildSpawner& Instance();

    bool Start(const std::string& command, QVRChildHandle& child, std::string& error) override;
    bool SetNonBlocking(int fd) override;
    int WaitReadable(int fd, int timeoutMs) override;
    long Read(int fd, char* buffer, std::size_t size) override;
    void CloseReadEnd(int fd) override;
    void KillProcessGroup(pid_t pgid) override;
    bool WaitExit(pid_t pid, int timeoutMs, int& status) override;
    int Reap(pid_t pid) override;
    long long NowMilliseconds() override;
    void Pause(int milliseconds) override;
};

#endif

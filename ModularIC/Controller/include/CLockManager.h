#ifndef CLOCKMANAGER_H
#define CLOCKMANAGER_H

#include "ILockFileOps.h"

// The machine-wide single-instance lock: an exclusive record lock on a fixed
// file, held by the process for the life of a run and dropped by the system if
// the process dies.
class CLockManager {
public:
    static const char kLockFilePath[];   // "/var/lock/sorvik.tmp"
    static const char kSetupFilePath[];  // "/var/lock/.spsetup", built but never used
    // Tries at a file that keeps being replaced under us before giving up.
    static const int kLockAttempts = 10;

    // Uses the real file calls when ops is null; ops is borrowed and must outlive this.
    explicit CLockManager(ILockFileOps* ops = nullptr);
    CLockManager(const CLockManager&) = delete;
    CLockManager& operator=(const CLockManager&) = delete;
    virtual ~CLockManager() = default;

    // Opens (creating with mode 0222) and locks the whole file without waiting.
    // Returns the descriptor, which stays open, or -1 when the lock is held
    // elsewhere, the file cannot be opened or is not a regular file.
    virtual int ProcessLock();
    // Unlocks, closes the handle and removes the file. Errors are ignored.
    virtual void ReleaseProcessLock(int handle);

private:
    ILockFileOps& m_ops;
};

#endif

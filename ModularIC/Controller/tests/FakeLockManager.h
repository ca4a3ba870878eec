#ifndef FAKELOCKMANAGER_H
#define FAKELOCKMANAGER_H

#include <cstdio>
#include <functional>
#include <vector>

#include "CLockManager.h"

// What a FakeLockManager was asked; outlives the controller that owns the fake.
struct LockRecord {
    int lockResult = 5;
    std::function<void()> onLock;  // may throw
    int lockCalls = 0;
    std::vector<int> released;
    const char* releaseMarker = nullptr;  // written to standard error on release
};

class FakeLockManager : public CLockManager {
public:
    explicit FakeLockManager(LockRecord& record) : m_record(record) {}
    int ProcessLock() override {
        ++m_record.lockCalls;
        if (m_record.onLock) m_record.onLock();
        return m_record.lockResult;
    }
    void ReleaseProcessLock(int handle) override {
        m_record.released.push_back(handle);
        if (m_record.releaseMarker != nullptr) std::fputs(m_record.releaseMarker, stderr);
    }

private:
    LockRecord& m_record;
};

#endif

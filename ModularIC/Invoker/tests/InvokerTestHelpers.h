#ifndef INVOKERTESTHELPERS_H
#define INVOKERTESTHELPERS_H

#include <algorithm>
#include <functional>
#include <mutex>
#include <string>
#include <utility>
#include <vector>

#include "CLinuxImpl.h"
#include "IPlatformImpl.h"
#include "QVRDataModelManager.h"

namespace invoker_test {

// A fresh directory under /tmp, removed with its contents. Also restores the
// working directory, which module runs change.
class TempDir {
public:
    TempDir();
    ~TempDir();
    std::string Sub(const std::string& name) const { return path + "/" + name; }
    std::string path;

private:
    std::string m_cwd;
};

// Writes an executable /bin/sh script dir/name, creating dir.
void WriteScript(const std::string& dir, const std::string& name, const std::string& body);
std::string ReadFile(const std::string& path);
// True when this process has no child left, running or zombie.
bool HasNoChildren();
// True once the process whose pid is in pidFile is gone or a zombie (waits up to two seconds).
bool ProcessDies(const std::string& pidFile);

// The real platform, except that shell commands are only recorded.
class RecordingPlatform : public IPlatformImpl {
public:
    RecordingPlatform();
    ~RecordingPlatform() override;
    std::string GetCurrentDirectory() override { return m_real.GetCurrentDirectory(); }
    bool SetCurrentDirectory(const std::string& dir) override { return m_real.SetCurrentDirectory(dir); }
    int RunShellCommand(const std::string& command) override;
    void SleepMilliseconds(unsigned long ms) override { m_real.SleepMilliseconds(ms); }
    std::vector<std::string> shellCommands;

private:
    CLinuxImpl m_real;
    IPlatformImpl* m_previous;
};

// Keeps every module output handed over instead of parsing it.
class RecordingDataModelManager : public QVRDataModelManager {
public:
    using QVRDataModelManager::WriteData;
    bool WriteData(std::string& moduleIdentity, std::string& output) override {
        {
            std::lock_guard<std::mutex> lock(m_mutex);
            m_writes.emplace_back(moduleIdentity, output);
        }
        if (onWrite) onWrite();
        return true;
    }
    // Sorted by identity: pooled modules finish in any order.
    std::vector<std::pair<std::string, std::string>> Writes() {
        std::lock_guard<std::mutex> lock(m_mutex);
        auto writes = m_writes;
        std::sort(writes.begin(), writes.end());
        return writes;
    }
    std::function<void()> onWrite;  // called outside the lock; may throw

private:
    std::mutex m_mutex;
    std::vector<std::pair<std::string, std::string>> m_writes;
};

// The what() text of the E that action throws, or "no exception".
template <class E, class F>
std::string WhatOf(F action) {
    try {
        action();
    } catch (const E& e) {
        return e.what();
    }
    return "no exception";
}

}  // namespace invoker_test

#endif

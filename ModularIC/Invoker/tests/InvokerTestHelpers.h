#ifndef INVOKERTESTHELPERS_H
#define INVOKERTESTHELPERS_H

#include <algorithm>
#include <mutex>
#include <string>
#include <utility>
#include <vector>

#include "CLinuxImpl.h"
#include "CPlatformLayer.h"
#include "ConfigTestSupport.h"
#include "QVRDataModelManager.h"

namespace invoker_test {

// Writes an executable /bin/sh script dir/name, creating dir.
void WriteScript(const std::string& dir, const std::string& name, const std::string& body);
std::string ReadFile(const std::string& path);
// True when this process has no child left, running or zombie.
bool HasNoChildren();
// True once the process whose pid is in pidFile is gone or a zombie (waits up to two seconds).
bool ProcessDies(const std::string& pidFile);

// The real platform, except that shell commands are only recorded.
struct RecordingPlatform : CLinuxImpl {
    int RunShellCommand(const std::string& command, bool discardStderr) override {
        shellCommands.push_back(command);
        quietShellCommands.push_back(discardStderr);
        return 0;
    }
    std::vector<std::string> shellCommands;
    std::vector<bool> quietShellCommands;
};

// Keeps every module output handed over instead of parsing it.
struct RecordingDataModelManager : QVRDataModelManager {
    RecordingDataModelManager() : QVRDataModelManager(IQVRShmApi::Real()) {}
    using QVRDataModelManager::WriteData;
    bool WriteData(std::string& moduleIdentity, std::string& output) override {
        std::lock_guard<std::mutex> lock(mutex);
        writes.emplace_back(moduleIdentity, output);
        return true;
    }
    // Sorted by identity: pooled modules finish in any order.
    std::vector<std::pair<std::string, std::string>> Writes() {
        std::lock_guard<std::mutex> lock(mutex);
        auto sorted = writes;
        std::sort(sorted.begin(), sorted.end());
        return sorted;
    }
    std::mutex mutex;
    std::vector<std::pair<std::string, std::string>> writes;
};

}  // namespace invoker_test

#endif

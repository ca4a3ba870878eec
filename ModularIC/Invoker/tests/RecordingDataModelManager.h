#ifndef RECORDINGDATAMODELMANAGER_H
#define RECORDINGDATAMODELMANAGER_H

#include <functional>
#include <mutex>
#include <string>
#include <utility>
#include <vector>

#include "QVRDataModelManager.h"

namespace invoker_test {

// Keeps every module output handed over, in arrival order, instead of parsing it.
class RecordingDataModelManager : public QVRDataModelManager {
public:
    using QVRDataModelManager::WriteData;

    bool WriteData(std::string& moduleIdentity, std::string& output) override {
        {
            std::lock_guard<std::mutex> lock(m_mutex);
            m_writes.emplace_back(moduleIdentity, output);
        }
        if (onWrite) onWrite(moduleIdentity);
        return true;
    }

    std::vector<std::pair<std::string, std::string>> Writes() {
        std::lock_guard<std::mutex> lock(m_mutex);
        return m_writes;
    }
    std::vector<std::string> Identities() {
        std::vector<std::string> ids;
        for (const auto& write : Writes()) ids.push_back(write.first);
        return ids;
    }

    // Called after recording, outside the lock (may throw).
    std::function<void(const std::string&)> onWrite;

private:
    std::mutex m_mutex;
    std::vector<std::pair<std::string, std::string>> m_writes;
};

}  // namespace invoker_test

#endif

#ifndef FAKEPLATFORM_H
#define FAKEPLATFORM_H

// Records shell commands and sleeps instead of running them. Installs itself
// on construction and restores the real platform on destruction.

#include <string>
#include <vector>

#include "CPlatformLayer.h"
#include "IPlatformImpl.h"

class FakePlatform : public IPlatformImpl {
  public:
    // The status a shell gives for a command it cannot find.
    static constexpr int kNotFound = 127 << 8;

    FakePlatform() { mPrevious = CPlatformLayer::SetImplForTesting(this); }
    ~FakePlatform() override { CPlatformLayer::SetImplForTesting(mPrevious); }

    // Status answered for commands containing key (first match wins); others
    // get defaultStatus.
    std::vector<std::pair<std::string, int>> statuses;
    int defaultStatus = 0;

    std::vector<std::string> commands;
    std::vector<unsigned long> sleeps;
    // Commands and sleeps interleaved, sleeps written as "sleep <ms>".
    std::vector<std::string> events;

    std::string GetCurrentDirectory() override { return "/"; }
    bool SetCurrentDirectory(const std::string&) override { return true; }

    int RunShellCommand(const std::string& command) override {
        commands.push_back(command);
        events.push_back(command);
        for (const auto& entry : statuses) {
            if (command.find(entry.first) != std::string::npos) return entry.second;
        }
        return defaultStatus;
    }

    void SleepMilliseconds(unsigned long milliseconds) override {
        sleeps.push_back(milliseconds);
        events.push_back("sleep " + std::to_string(milliseconds));
    }

    unsigned long TotalSleepMs() const {
        unsigned long total = 0;
        for (unsigned long s : sleeps) total += s;
        return total;
    }

  private:
    IPlatformImpl* mPrevious;
};

#endif

#ifndef BASEUTILSTESTSUPPORT_H
#define BASEUTILSTESTSUPPORT_H

#include <stdlib.h>

#include <algorithm>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

#include "IBQMOSProbe.h"
#include "IPlatformImpl.h"

// A fresh directory under /tmp, removed with everything in it on destruction.
class ScopedTempDir {
public:
    ScopedTempDir() {
        char pattern[] = "/tmp/baseutils_test_XXXXXX";
        if (mkdtemp(pattern) != nullptr) mPath = pattern;
    }
    ~ScopedTempDir() {
        std::error_code ignored;
        if (!mPath.empty()) std::filesystem::remove_all(mPath, ignored);
    }
    const std::string& Path() const { return mPath; }
    std::string File(const std::string& name) const { return mPath + "/" + name; }

private:
    std::string mPath;
};

// Records shell commands and sleeps; a command gets the status of the first key of statuses it contains.
class FakePlatform : public IPlatformImpl {
public:
    static constexpr int kNotFound = 127 << 8;  // the shell's status for a missing command
    std::string GetCurrentDirectory() override { return "/"; }
    bool SetCurrentDirectory(const std::string&) override { return true; }
    int RunShellCommand(const std::string& command, bool discardStderr) override {
        commands.push_back(command);
        quiet.push_back(discardStderr);
        events.push_back(command);
        for (const auto& entry : statuses)
            if (command.find(entry.first) != std::string::npos) return entry.second;
        return defaultStatus;
    }
    // The module listing is "lsmodOutput"; reading it is an event of its own.
    int ReadShellOutput(const std::string& command, std::string& output) override {
        events.push_back("read " + command);
        output = lsmodOutput;
        return lsmodStatus;
    }
    void SleepMilliseconds(unsigned long milliseconds) override {
        sleeps.push_back(milliseconds);
        events.push_back("sleep " + std::to_string(milliseconds));
    }

    std::vector<std::pair<std::string, int>> statuses;
    int defaultStatus = 0;    // for commands matching no key
    std::string lsmodOutput;  // what "lsmod" prints
    int lsmodStatus = 0;
    std::vector<std::string> commands, events;  // events: commands and "sleep <ms>" in order
    std::vector<bool> quiet;                    // per command: its standard error discarded
    std::vector<unsigned long> sleeps;
};

// A host with the given "/etc/vmware-release" text (null: no such file) and uname system name.
struct FakeOSProbe : IBQMOSProbe {
    FakeOSProbe(const char* release, const char* sysname, bool unameWorks = true)
        : release(release), sysname(sysname), unameWorks(unameWorks) {}
    bool FileExists(const std::string& path) override {
        return release != nullptr && path == "/etc/vmware-release";
    }
    bool ReadFirstLine(const std::string& path, std::size_t maxCharacters, std::string& line) override {
        if (!FileExists(path)) return false;
        line.assign(release, std::min(std::strcspn(release, "\n"), maxCharacters));
        return true;
    }
    bool Uname(std::string& systemName, std::string& version) override {
        systemName = sysname;
        version = "6.1.0-18-amd64";
        return unameWorks;
    }
    const char *release, *sysname;
    bool unameWorks;
};

inline std::string ReadWholeFile(const std::string& path) {
    std::ostringstream text;
    text << std::ifstream(path, std::ios::binary).rdbuf();
    return text.str();
}

inline void WriteWholeFile(const std::string& path, const std::string& content) {
    std::ofstream(path, std::ios::binary | std::ios::trunc) << content;
}

inline std::vector<std::string> SplitLines(const std::string& text) {
    std::vector<std::string> lines;
    std::istringstream in(text);
    for (std::string line; std::getline(in, line);) lines.push_back(line);
    return lines;
}

#endif

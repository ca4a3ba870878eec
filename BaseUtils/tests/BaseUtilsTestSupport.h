#ifndef BASEUTILSTESTSUPPORT_H
#define BASEUTILSTESTSUPPORT_H

#include <stdlib.h>

#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>
#include <vector>

#include "CPlatformLayer.h"
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

// Records shell commands and sleeps instead of running them.
class FakePlatformImpl : public IPlatformImpl {
public:
    std::string GetCurrentDirectory() override { return "/fake"; }
    bool SetCurrentDirectory(const std::string&) override { return false; }
    int RunShellCommand(const std::string& command, bool) override {
        commands.push_back(command);
        return shellStatus;
    }
    int ReadShellOutput(const std::string& command, std::string& output) override {
        output = "output of " + command;
        return RunShellCommand(command, true);
    }
    void SleepMilliseconds(unsigned long milliseconds) override { sleeps.push_back(milliseconds); }

    std::vector<std::string> commands;
    std::vector<unsigned long> sleeps;
    int shellStatus = 0;
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

#ifndef INVOKERTESTHELPERS_H
#define INVOKERTESTHELPERS_H

#include <sys/types.h>

#include <mutex>
#include <string>
#include <vector>

#include "CLinuxImpl.h"
#include "IPlatformImpl.h"

namespace invoker_test {

// A fresh directory under /tmp, removed with everything in it.
class TempDir {
public:
    TempDir();
    TempDir(const TempDir&) = delete;
    TempDir& operator=(const TempDir&) = delete;
    ~TempDir();
    const std::string& Path() const { return m_path; }
    std::string Sub(const std::string& name) const { return m_path + "/" + name; }

private:
    std::string m_path;
};

// Writes an executable /bin/sh script named name into dir.
void WriteScript(const std::string& dir, const std::string& name, const std::string& body);
void WriteFile(const std::string& path, const std::string& content);
std::string ReadFile(const std::string& path);
void MakeDir(const std::string& path);

// True when this process has no child left to reap (no zombie, none running).
bool HasNoChildren();
// True once pid is gone or a zombie, within about two seconds.
bool ProcessDies(pid_t pid);

// Restores the working directory on scope exit: modules change it.
class CwdRestorer {
public:
    CwdRestorer();
    ~CwdRestorer();

private:
    std::string m_cwd;
};

// The real platform, recording every shell command and directory change.
class RecordingPlatform : public IPlatformImpl {
public:
    RecordingPlatform();
    ~RecordingPlatform() override;
    std::string GetCurrentDirectory() override { return m_real.GetCurrentDirectory(); }
    bool SetCurrentDirectory(const std::string& dir) override;
    int RunShellCommand(const std::string& command) override;
    void SleepMilliseconds(unsigned long milliseconds) override { m_real.SleepMilliseconds(milliseconds); }

    std::vector<std::string> ShellCommands();
    std::vector<std::string> Directories();

    bool failDirectoryChange = false;
    bool runShellCommands = true;

private:
    CLinuxImpl m_real;
    IPlatformImpl* m_previous;
    std::mutex m_mutex;
    std::vector<std::string> m_shellCommands;
    std::vector<std::string> m_directories;
};

}  // namespace invoker_test

#endif

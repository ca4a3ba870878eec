#ifndef BASEUTILSTESTSUPPORT_H
#define BASEUTILSTESTSUPPORT_H

#include <string>
#include <vector>

#include "CPlatformLayer.h"
#include "IPlatformImpl.h"

// A fresh directory under /tmp, removed with everything in it on destruction.
class ScopedTempDir {
  public:
    ScopedTempDir();
    ~ScopedTempDir();
    ScopedTempDir(const ScopedTempDir&) = delete;
    ScopedTempDir& operator=(const ScopedTempDir&) = delete;

    const std::string& Path() const { return mPath; }
    std::string File(const std::string& name) const { return mPath + "/" + name; }

  private:
    std::string mPath;
};

// Sends file descriptor 2 to a temporary file until Release (or destruction).
class ScopedStderrCapture {
  public:
    ScopedStderrCapture();
    ~ScopedStderrCapture();
    // Restores standard error and returns what was written meanwhile.
    std::string Release();

  private:
    int mSaved;
    std::string mFile;
};

// Records shell commands instead of running them.
class FakePlatformImpl : public IPlatformImpl {
  public:
    std::string GetCurrentDirectory() override { return directory; }
    bool SetCurrentDirectory(const std::string& dir) override {
        directory = dir;
        return true;
    }
    int RunShellCommand(const std::string& command) override {
        commands.push_back(command);
        return shellStatus;
    }
    void SleepMilliseconds(unsigned long milliseconds) override { sleeps.push_back(milliseconds); }

    std::string directory = "/";
    std::vector<std::string> commands;
    std::vector<unsigned long> sleeps;
    int shellStatus = 0;
};

// Installs an implementation in CPlatformLayer for the guard's lifetime.
class ScopedPlatformImpl {
  public:
    explicit ScopedPlatformImpl(IPlatformImpl* impl) : mPrevious(CPlatformLayer::SetImplForTesting(impl)) {}
    ~ScopedPlatformImpl() { CPlatformLayer::SetImplForTesting(mPrevious); }

  private:
    IPlatformImpl* mPrevious;
};

std::string ReadWholeFile(const std::string& path);
void WriteWholeFile(const std::string& path, const std::string& content);
std::vector<std::string> SplitLines(const std::string& text);

#endif

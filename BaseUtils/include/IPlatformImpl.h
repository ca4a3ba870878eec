#ifndef IPLATFORMIMPL_H
#define IPLATFORMIMPL_H

#include <string>

// The operating-system calls behind CPlatformLayer. CLinuxImpl is the real one;
// tests install a fake with CPlatformLayer::SetImplForTesting.
class IPlatformImpl {
  public:
    virtual ~IPlatformImpl() = default;
    virtual std::string GetCurrentDirectory() = 0;
    virtual bool SetCurrentDirectory(const std::string& dir) = 0;
    // Runs the text through /bin/sh; returns the raw wait status (-1 if no shell ran).
    virtual int RunShellCommand(const std::string& command) = 0;
    virtual void SleepMilliseconds(unsigned long milliseconds) = 0;
};

#endif

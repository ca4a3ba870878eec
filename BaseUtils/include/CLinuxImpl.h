#ifndef CLINUXIMPL_H
#define CLINUXIMPL_H

#include "IPlatformImpl.h"

// The real platform calls.
class CLinuxImpl : public IPlatformImpl {
  public:
    std::string GetCurrentDirectory() override;
    bool SetCurrentDirectory(const std::string& dir) override;
    int RunShellCommand(const std::string& command) override;
    void SleepMilliseconds(unsigned long milliseconds) override;
};

#endif

#ifndef CLINUXIMPL_H
#define CLINUXIMPL_H

#include "IPlatformImpl.h"

// The real platform calls.
class CLinuxImpl : public IPlatformImpl {
public:
    std::string GetCurrentDirectory() override;
    bool SetCurrentDirectory(const std::string& dir) override;
    int RunShellCommand(const std::string& command, bool discardStderr) override;
    int ReadShellOutput(const std::string& command, std::string& output) override;
    void SleepMilliseconds(unsigned long milliseconds) override;
};

#endif

#ifndef IPLATFORMIMPL_H
#define IPLATFORMIMPL_H

#include <string>

// The operating-system calls behind CPlatformLayer. CLinuxImpl is the real one;
// classes that use it take one in their constructor, the real one by default.
class IPlatformImpl {
public:
    virtual ~IPlatformImpl() = default;
    virtual std::string GetCurrentDirectory() = 0;
    virtual bool SetCurrentDirectory(const std::string& dir) = 0;
    // Runs the text through /bin/sh with default signal handling; its standard
    // error goes to /dev/null when discardStderr is set. The raw wait status, or
    // -1 when no shell ran.
    virtual int RunShellCommand(const std::string& command, bool discardStderr) = 0;
    // As RunShellCommand with standard error discarded, collecting what the
    // command writes on its standard output into output.
    virtual int ReadShellOutput(const std::string& command, std::string& output) = 0;
    virtual void SleepMilliseconds(unsigned long milliseconds) = 0;
};

#endif

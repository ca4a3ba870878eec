#ifndef CPLATFORMLAYER_H
#define CPLATFORMLAYER_H

#include <string>

#include "IPlatformImpl.h"

// The collector's only way to the operating system's process-wide state:
// working directory, shell commands and sleeps.
class CPlatformLayer {
public:
    static std::string getCurrentDirectory();
    static bool setCurrentDirectory(const std::string& dir);
    // The shell's standard error reaches ours unless discardStderr is set.
    static int RunShellCommand(const std::string& command, bool discardStderr = false);
    static int ReadShellOutput(const std::string& command, std::string& output);
    static void SleepMilliseconds(unsigned long milliseconds);

    // The real implementation: the default of every class that takes an
    // IPlatformImpl, so tests can hand in a fake instead.
    static IPlatformImpl& Real();
};

#endif

#include "CPlatformLayer.h"

#include "CLinuxImpl.h"

IPlatformImpl& CPlatformLayer::Real() {
    static CLinuxImpl real;
    return real;
}

std::string CPlatformLayer::getCurrentDirectory() { return Real().GetCurrentDirectory(); }

bool CPlatformLayer::setCurrentDirectory(const std::string& dir) { return Real().SetCurrentDirectory(dir); }

int CPlatformLayer::RunShellCommand(const std::string& command, bool discardStderr) {
    return Real().RunShellCommand(command, discardStderr);
}

int CPlatformLayer::ReadShellOutput(const std::string& command, std::string& output) {
    return Real().ReadShellOutput(command, output);
}

void CPlatformLayer::SleepMilliseconds(unsigned long milliseconds) { Real().SleepMilliseconds(milliseconds); }

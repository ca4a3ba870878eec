#include "CPlatformLayer.h"

#include "CLinuxImpl.h"

namespace {
CLinuxImpl g_linuxImpl;
IPlatformImpl* g_impl = &g_linuxImpl;
}  // namespace

IPlatformImpl& CPlatformLayer::Impl() { return *g_impl; }

IPlatformImpl* CPlatformLayer::SetImplForTesting(IPlatformImpl* impl) {
    IPlatformImpl* previous = g_impl;
    g_impl = impl != nullptr ? impl : &g_linuxImpl;
    return previous;
}

std::string CPlatformLayer::getCurrentDirectory() { return Impl().GetCurrentDirectory(); }

bool CPlatformLayer::setCurrentDirectory(const std::string& dir) { return Impl().SetCurrentDirectory(dir); }

int CPlatformLayer::RunShellCommand(const std::string& command, bool discardStderr) {
    return Impl().RunShellCommand(command, discardStderr);
}

int CPlatformLayer::ReadShellOutput(const std::string& command, std::string& output) {
    return Impl().ReadShellOutput(command, output);
}

void CPlatformLayer::SleepMilliseconds(unsigned long milliseconds) { Impl().SleepMilliseconds(milliseconds); }

#include "CPlatformLayer.h"

#include "CLinuxImpl.h"

IPlatformImpl& CPlatformLayer::Real() {
    static CLinuxImpl real;
    return real;
}

std::string CPlatformLayer::getCurrentDirectory() { return Real().GetCurrentDirectory(); }

bool CPlatformLayer::setCurrentDirectory(const std::string& dir) { return Real().SetCurrentDirectory(dir); }

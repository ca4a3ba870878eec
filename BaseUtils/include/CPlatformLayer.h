#ifndef CPLATFORMLAYER_H
#define CPLATFORMLAYER_H

#include <string>

#include "IPlatformImpl.h"

// The working directory through the real platform, and the real platform
// itself for classes that take one.
class CPlatformLayer {
public:
    static std::string getCurrentDirectory();
    static bool setCurrentDirectory(const std::string& dir);

    // The real implementation: the default of every class that takes an
    // IPlatformImpl, so tests can hand in a fake instead.
    static IPlatformImpl& Real();
};

#endif

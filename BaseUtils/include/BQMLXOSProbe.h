#ifndef BQMLXOSPROBE_H
#define BQMLXOSPROBE_H

#include "IBQMOSProbe.h"

// The real probe: stat, the C library's file reading and uname.
class BQMLXOSProbe : public IBQMOSProbe {
public:
    bool FileExists(const std::string& path) override;
    bool ReadFirstLine(const std::string& path, std::size_t maxCharacters, std::string& line) override;
    bool Uname(std::string& systemName, std::string& release) override;

    // A process-wide instance, the default wherever no probe is given.
    static BQMLXOSProbe& Instance();
};

#endif

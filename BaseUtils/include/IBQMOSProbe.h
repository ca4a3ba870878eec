#ifndef IBQMOSPROBE_H
#define IBQMOSPROBE_H

#include <cstddef>
#include <string>

// The system calls behind operating-system identification. BQMLXOSProbe is the
// real one; tests pass a fake.
class IBQMOSProbe {
public:
    virtual ~IBQMOSProbe() = default;
    // Whether stat succeeds on the path.
    virtual bool FileExists(const std::string& path) = 0;
    // The file's first line without its newline, at most maxCharacters long; false if
    // the file cannot be opened.
    virtual bool ReadFirstLine(const std::string& path, std::size_t maxCharacters, std::string& line) = 0;
    // uname's system name and release; false if uname fails.
    virtual bool Uname(std::string& systemName, std::string& release) = 0;
};

#endif

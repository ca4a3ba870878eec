#ifndef OUTPUTTESTSUPPORT_H
#define OUTPUTTESTSUPPORT_H

#include <functional>
#include <string>

namespace outtest {

// A clock fixed at 2016-03-01 10:22:05 UTC, in the UTC zone, for the life of the object.
struct FixedClock {
    FixedClock();
    ~FixedClock();
    std::string oldTZ;
    bool hadTZ;
};

// A fresh directory removed with its files on destruction.
struct TempDir {
    TempDir();
    ~TempDir();
    std::string Path(const std::string& name) const { return path + "/" + name; }
    std::string path;
};

// Everything written to descriptor 1 while action runs.
std::string CaptureStdout(const std::function<void()>& action);
std::string ReadFile(const std::string& path);
bool FileExists(const std::string& path);
// What a UTF-16LE encoder with a byte-order mark makes of ASCII text.
std::string Utf16LeWithBom(const std::string& ascii);

}  // namespace outtest

#endif

#include "BQMLXOSProbe.h"

#include <sys/stat.h>
#include <sys/utsname.h>

#include <cstdio>

bool BQMLXOSProbe::FileExists(const std::string& path) {
    struct stat info;
    return stat(path.c_str(), &info) == 0;
}

bool BQMLXOSProbe::ReadFirstLine(const std::string& path, std::size_t maxCharacters, std::string& line) {
    line.clear();
    std::FILE* stream = std::fopen(path.c_str(), "re");
    if (stream == nullptr) return false;
    while (line.size() < maxCharacters) {
        const int c = std::fgetc(stream);
        if (c == EOF || c == '\n') break;
        line.push_back(static_cast<char>(c));
    }
    std::fclose(stream);
    return true;
}

bool BQMLXOSProbe::Uname(std::string& systemName, std::string& release) {
    struct utsname names;
    if (uname(&names) != 0) return false;
    systemName = names.sysname;
    release = names.release;
    return true;
}

BQMLXOSProbe& BQMLXOSProbe::Instance() {
    static BQMLXOSProbe probe;
    return probe;
}

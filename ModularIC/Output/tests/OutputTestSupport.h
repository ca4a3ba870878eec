#ifndef OUTPUTTESTSUPPORT_H
#define OUTPUTTESTSUPPORT_H

#include <gtest/gtest.h>

#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <filesystem>
#include <fstream>
#include <functional>
#include <iostream>
#include <stdexcept>
#include <string>

#include "QVROutputClock.h"

namespace outtest {

// A clock fixed at 2016-03-01 10:22:05 UTC, in the UTC zone, for the life of the object.
struct FixedClock {
    FixedClock() : hadTZ(std::getenv("TZ") != nullptr) {
        if (hadTZ) oldTZ = std::getenv("TZ");
        setenv("TZ", "UTC", 1);
        tzset();
        QVROutputClock::SetSource([] { return static_cast<std::time_t>(1456827725); });
    }
    ~FixedClock() {
        QVROutputClock::SetSource(nullptr);
        hadTZ ? setenv("TZ", oldTZ.c_str(), 1) : unsetenv("TZ");
        tzset();
    }
    bool hadTZ;
    std::string oldTZ;
};

// A fresh directory removed with its files on destruction.
struct TempDir {
    TempDir() : path(std::filesystem::temp_directory_path().string() + "/qvr_output_XXXXXX") {
        if (mkdtemp(path.data()) == nullptr) throw std::runtime_error("mkdtemp failed");
    }
    ~TempDir() {
        std::error_code ignored;
        std::filesystem::remove_all(path, ignored);
    }
    std::string Path(const std::string& name) const { return path + "/" + name; }
    std::string path;
};

// Everything written to descriptor 1 while action runs.
inline std::string CaptureStdout(const std::function<void()>& action) {
    ::testing::internal::CaptureStdout();
    action();
    std::cout.flush();
    std::fflush(stdout);
    return ::testing::internal::GetCapturedStdout();
}

inline std::string ReadFile(const std::string& path) {
    std::ifstream in(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>()};
}

inline bool FileExists(const std::string& path) { return std::filesystem::exists(path); }

}  // namespace outtest

#endif

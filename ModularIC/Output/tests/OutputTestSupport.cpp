#include "OutputTestSupport.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <stdexcept>

#include "QVROutputClock.h"

namespace outtest {

FixedClock::FixedClock() : hadTZ(std::getenv("TZ") != nullptr) {
    if (hadTZ) oldTZ = std::getenv("TZ");
    setenv("TZ", "UTC", 1);
    tzset();
    QVROutputClock::SetSource([] { return static_cast<std::time_t>(1456827725); });
}

FixedClock::~FixedClock() {
    QVROutputClock::SetSource(nullptr);
    hadTZ ? setenv("TZ", oldTZ.c_str(), 1) : unsetenv("TZ");
    tzset();
}

TempDir::TempDir() : path(std::filesystem::temp_directory_path().string() + "/qvr_output_XXXXXX") {
    if (mkdtemp(path.data()) == nullptr) throw std::runtime_error("mkdtemp failed");
}

TempDir::~TempDir() {
    std::error_code ignored;
    std::filesystem::remove_all(path, ignored);
}

std::string CaptureStdout(const std::function<void()>& action) {
    ::testing::internal::CaptureStdout();
    action();
    std::cout.flush();
    std::fflush(stdout);
    return ::testing::internal::GetCapturedStdout();
}

std::string ReadFile(const std::string& path) {
    std::ifstream in(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>()};
}

bool FileExists(const std::string& path) { return std::filesystem::exists(path); }

std::string Utf16LeWithBom(const std::string& ascii) {
    std::string bytes("\xFF\xFE", 2);
    for (char c : ascii) bytes += std::string{c, '\0'};
    return bytes;
}

}  // namespace outtest

#include "BaseUtilsTestSupport.h"

#include <fcntl.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <stdexcept>

ScopedTempDir::ScopedTempDir() {
    char pattern[] = "/tmp/baseutils_test_XXXXXX";
    if (mkdtemp(pattern) == nullptr) throw std::runtime_error("mkdtemp failed");
    mPath = pattern;
}

ScopedTempDir::~ScopedTempDir() {
    std::error_code error;
    std::filesystem::remove_all(mPath, error);
}

ScopedStderrCapture::ScopedStderrCapture() : mSaved(-1) {
    char pattern[] = "/tmp/baseutils_stderr_XXXXXX";
    const int fd = mkstemp(pattern);
    if (fd < 0) throw std::runtime_error("mkstemp failed");
    mFile = pattern;
    std::fflush(stderr);
    mSaved = dup(2);
    dup2(fd, 2);
    close(fd);
}

ScopedStderrCapture::~ScopedStderrCapture() { Release(); }

std::string ScopedStderrCapture::Release() {
    if (mSaved < 0) return std::string();
    std::fflush(stderr);
    dup2(mSaved, 2);
    close(mSaved);
    mSaved = -1;
    const std::string text = ReadWholeFile(mFile);
    unlink(mFile.c_str());
    return text;
}

std::string ReadWholeFile(const std::string& path) {
    std::ifstream in(path, std::ios::binary);
    std::ostringstream text;
    text << in.rdbuf();
    return text.str();
}

void WriteWholeFile(const std::string& path, const std::string& content) {
    std::ofstream out(path, std::ios::binary | std::ios::trunc);
    out << content;
}

std::vector<std::string> SplitLines(const std::string& text) {
    std::vector<std::string> lines;
    std::istringstream in(text);
    std::string line;
    while (std::getline(in, line)) lines.push_back(line);
    return lines;
}

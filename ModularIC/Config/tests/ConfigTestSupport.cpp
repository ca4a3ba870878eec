#include "ConfigTestSupport.h"

#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <stdexcept>
#include <vector>

ScopedTempDir::ScopedTempDir() {
    const char* base = std::getenv("TMPDIR");
    std::string pattern = std::string(base != nullptr && *base != '\0' ? base : "/tmp") + "/qvrcfgXXXXXX";
    std::vector<char> buffer(pattern.begin(), pattern.end());
    buffer.push_back('\0');
    if (mkdtemp(buffer.data()) == nullptr) throw std::runtime_error("mkdtemp failed");
    m_path = buffer.data();
}

ScopedTempDir::~ScopedTempDir() {
    std::error_code ignored;
    std::filesystem::remove_all(m_path, ignored);
}

void ScopedTempDir::WriteFile(const std::string& name, const std::string& text) const {
    std::ofstream file(m_path + "/" + name, std::ios::binary | std::ios::trunc);
    file.write(text.data(), static_cast<std::streamsize>(text.size()));
    if (!file) throw std::runtime_error("cannot write " + name);
}

ScopedChdir::ScopedChdir(const std::string& dir) {
    char buffer[4096];
    if (getcwd(buffer, sizeof buffer) == nullptr) throw std::runtime_error("getcwd failed");
    m_previous = buffer;
    if (chdir(dir.c_str()) != 0) throw std::runtime_error("chdir failed");
}

ScopedChdir::~ScopedChdir() {
    if (chdir(m_previous.c_str()) != 0) {
        // The previous directory vanished; stay where we are.
    }
}

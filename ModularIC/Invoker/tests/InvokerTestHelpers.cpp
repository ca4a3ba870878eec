#include "InvokerTestHelpers.h"

#include <signal.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <cstdlib>
#include <fstream>
#include <sstream>
#include <stdexcept>
#include <thread>

#include "CPlatformLayer.h"

namespace invoker_test {

TempDir::TempDir() {
    char pattern[] = "/tmp/sorvik-invoker-XXXXXX";
    if (mkdtemp(pattern) == nullptr) throw std::runtime_error("mkdtemp failed");
    m_path = pattern;
}

TempDir::~TempDir() {
    const std::string command = "rm -rf '" + m_path + "'";
    if (std::system(command.c_str()) != 0) {
        // Nothing more to do in a destructor; the directory is under /tmp.
    }
}

void WriteFile(const std::string& path, const std::string& content) {
    std::ofstream out(path, std::ios::binary | std::ios::trunc);
    out << content;
    if (!out) throw std::runtime_error("cannot write " + path);
}

std::string ReadFile(const std::string& path) {
    std::ifstream in(path, std::ios::binary);
    std::ostringstream text;
    text << in.rdbuf();
    return text.str();
}

void WriteScript(const std::string& dir, const std::string& name, const std::string& body) {
    const std::string path = dir + "/" + name;
    WriteFile(path, "#!/bin/sh\n" + body);
    if (chmod(path.c_str(), 0755) != 0) throw std::runtime_error("chmod failed for " + path);
}

void MakeDir(const std::string& path) {
    if (mkdir(path.c_str(), 0755) != 0 && errno != EEXIST)
        throw std::runtime_error("mkdir failed for " + path);
}

bool HasNoChildren() {
    errno = 0;
    return waitpid(-1, nullptr, WNOHANG) == -1 && errno == ECHILD;
}

bool ProcessDies(pid_t pid) {
    const auto until = std::chrono::steady_clock::now() + std::chrono::seconds(2);
    while (std::chrono::steady_clock::now() < until) {
        const std::string stat = ReadFile("/proc/" + std::to_string(pid) + "/stat");
        if (stat.empty()) return true;
        const std::string::size_type close = stat.rfind(')');
        if (close != std::string::npos && close + 2 < stat.size() && stat[close + 2] == 'Z') return true;
        std::this_thread::sleep_for(std::chrono::milliseconds(10));
    }
    return false;
}

CwdRestorer::CwdRestorer() : m_cwd(CLinuxImpl().GetCurrentDirectory()) {}

CwdRestorer::~CwdRestorer() { CLinuxImpl().SetCurrentDirectory(m_cwd); }

RecordingPlatform::RecordingPlatform() : m_previous(CPlatformLayer::SetImplForTesting(this)) {}

RecordingPlatform::~RecordingPlatform() { CPlatformLayer::SetImplForTesting(m_previous); }

bool RecordingPlatform::SetCurrentDirectory(const std::string& dir) {
    {
        std::lock_guard<std::mutex> lock(m_mutex);
        m_directories.push_back(dir);
    }
    if (failDirectoryChange) return false;
    return m_real.SetCurrentDirectory(dir);
}

int RecordingPlatform::RunShellCommand(const std::string& command) {
    {
        std::lock_guard<std::mutex> lock(m_mutex);
        m_shellCommands.push_back(command);
    }
    return runShellCommands ? m_real.RunShellCommand(command) : 0;
}

std::vector<std::string> RecordingPlatform::ShellCommands() {
    std::lock_guard<std::mutex> lock(m_mutex);
    return m_shellCommands;
}

std::vector<std::string> RecordingPlatform::Directories() {
    std::lock_guard<std::mutex> lock(m_mutex);
    return m_directories;
}

}  // namespace invoker_test

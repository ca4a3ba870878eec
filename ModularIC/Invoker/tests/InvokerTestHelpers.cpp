#include "InvokerTestHelpers.h"

#include <sys/stat.h>
#include <sys/wait.h>

#include <cerrno>
#include <chrono>
#include <fstream>
#include <sstream>
#include <stdexcept>
#include <thread>

namespace invoker_test {

void WriteScript(const std::string& dir, const std::string& name, const std::string& body) {
    if (mkdir(dir.c_str(), 0755) != 0 && errno != EEXIST) throw std::runtime_error("mkdir " + dir);
    const std::string file = dir + "/" + name;
    std::ofstream(file, std::ios::binary) << "#!/bin/sh\n" << body;
    if (chmod(file.c_str(), 0755) != 0) throw std::runtime_error("chmod " + file);
}

std::string ReadFile(const std::string& path) {
    std::ostringstream text;
    text << std::ifstream(path, std::ios::binary).rdbuf();
    return text.str();
}

bool HasNoChildren() {
    errno = 0;
    return waitpid(-1, nullptr, WNOHANG) == -1 && errno == ECHILD;
}

bool ProcessDies(const std::string& pidFile) {
    const std::string stat = "/proc/" + std::to_string(std::atol(ReadFile(pidFile).c_str())) + "/stat";
    const auto until = std::chrono::steady_clock::now() + std::chrono::seconds(2);
    while (std::chrono::steady_clock::now() < until) {
        const std::string text = ReadFile(stat);
        const std::string::size_type close = text.rfind(')');
        if (text.empty() || (close != std::string::npos && text.compare(close, 3, ") Z") == 0)) return true;
        std::this_thread::sleep_for(std::chrono::milliseconds(10));
    }
    return false;
}

}  // namespace invoker_test

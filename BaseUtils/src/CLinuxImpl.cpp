#include "CLinuxImpl.h"

#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <ctime>
#include <vector>

std::string CLinuxImpl::GetCurrentDirectory() {
    std::vector<char> buffer(4096);
    for (;;) {
        if (getcwd(buffer.data(), buffer.size()) != nullptr) return std::string(buffer.data());
        if (errno != ERANGE) return std::string();
        buffer.resize(buffer.size() * 2);
    }
}

bool CLinuxImpl::SetCurrentDirectory(const std::string& dir) { return chdir(dir.c_str()) == 0; }

int CLinuxImpl::RunShellCommand(const std::string& command) { return std::system(command.c_str()); }

void CLinuxImpl::SleepMilliseconds(unsigned long milliseconds) {
    struct timespec wait;
    wait.tv_sec = static_cast<time_t>(milliseconds / 1000);
    wait.tv_nsec = static_cast<long>(milliseconds % 1000) * 1000000L;
    while (nanosleep(&wait, &wait) != 0 && errno == EINTR) {
    }
}

#include "audit/Output.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <vector>

namespace audit {
namespace {

// Owns a descriptor; closes it at most once.
class Descriptor {
public:
    explicit Descriptor(int fd) : m_fd(fd) {}
    ~Descriptor() {
        if (m_fd >= 0) ::close(m_fd);
    }
    Descriptor(const Descriptor&) = delete;
    Descriptor& operator=(const Descriptor&) = delete;
    int Get() const { return m_fd; }
    int Close() {
        const int fd = m_fd;
        m_fd = -1;
        return ::close(fd);
    }

private:
    int m_fd;
};

std::string SystemError(const std::string& path, const char* call) {
    return path + ": " + call + ": " + std::strerror(errno);
}

}  // namespace

bool WriteFileAtomically(const std::string& path, const std::string& text, std::string& error) {
    std::vector<char> temporary(path.begin(), path.end());
    const char suffix[] = ".tmp.XXXXXX";
    temporary.insert(temporary.end(), suffix, suffix + sizeof suffix);
    Descriptor fd(mkostemp(temporary.data(), O_CLOEXEC));
    if (fd.Get() < 0) {
        error = SystemError(path, "cannot create a temporary file beside it");
        return false;
    }
    const std::string temporaryPath = temporary.data();
    bool ok = fchmod(fd.Get(), 0644) == 0;
    if (!ok) error = SystemError(temporaryPath, "fchmod");
    for (size_t written = 0; ok && written < text.size();) {
        const ssize_t n = ::write(fd.Get(), text.data() + written, text.size() - written);
        if (n < 0 && errno == EINTR) continue;
        if (n < 0) {
            error = SystemError(temporaryPath, "write");
            ok = false;
            break;
        }
        written += static_cast<size_t>(n);
    }
    if (ok && fsync(fd.Get()) != 0) {
        error = SystemError(temporaryPath, "fsync");
        ok = false;
    }
    if (fd.Close() != 0 && ok) {
        error = SystemError(temporaryPath, "close");
        ok = false;
    }
    if (ok && std::rename(temporaryPath.c_str(), path.c_str()) != 0) {
        error = SystemError(path, "rename");
        ok = false;
    }
    if (!ok) ::unlink(temporaryPath.c_str());
    return ok;
}

bool ColourWanted(bool terminal, const char* noColor) {
    return terminal && (noColor == nullptr || *noColor == '\0');
}

}  // namespace audit

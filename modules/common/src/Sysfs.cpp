#include "svm/Sysfs.h"

#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <climits>
#include <cstdlib>
#include <cstring>
#include <memory>

#include "svm/TextUtil.h"

namespace svm {
namespace {

std::string Reason(const std::string& what, const std::string& path) {
    return what + " " + path + ": " + std::strerror(errno);
}

struct FdCloser {
    int fd;
    ~FdCloser() {
        if (fd >= 0) ::close(fd);
    }
};

struct DirCloser {
    void operator()(DIR* d) const { ::closedir(d); }
};

}  // namespace

Sysfs::Sysfs(std::string root) : m_root(std::move(root)) {
    if (m_root.empty()) m_root = "/";
    while (m_root.size() > 1 && m_root.back() == '/') m_root.pop_back();
}

std::string Sysfs::Path(const std::string& path) const {
    if (m_root == "/") return path.empty() || path[0] != '/' ? "/" + path : path;
    return m_root + (path.empty() || path[0] != '/' ? "/" : "") + path;
}

bool Sysfs::ReadFile(const std::string& path, std::string& content, std::string& error,
                     size_t maxBytes) const {
    std::string full = Path(path);
    int fd;
    do {
        fd = ::open(full.c_str(), O_RDONLY | O_CLOEXEC | O_NOCTTY);
    } while (fd < 0 && errno == EINTR);
    if (fd < 0) {
        error = Reason("cannot read", path);
        return false;
    }
    FdCloser closer{fd};
    content.clear();
    char buffer[8192];
    while (content.size() < maxBytes) {
        ssize_t n = ::read(fd, buffer, std::min(sizeof buffer, maxBytes - content.size()));
        if (n < 0) {
            if (errno == EINTR) continue;
            error = Reason("cannot read", path);
            return false;
        }
        if (n == 0) break;
        content.append(buffer, static_cast<size_t>(n));
    }
    return true;
}

bool Sysfs::ReadLine(const std::string& path, std::string& line, std::string& error) const {
    std::string content;
    if (!ReadFile(path, content, error, 65536)) return false;
    size_t nl = content.find('\n');
    line = Trim(nl == std::string::npos ? content : content.substr(0, nl));
    return true;
}

std::string Sysfs::ReadLineOr(const std::string& path, const std::string& fallback) const {
    std::string line, error;
    return ReadLine(path, line, error) ? line : fallback;
}

bool Sysfs::ListDir(const std::string& path, std::vector<std::string>& names, std::string& error) const {
    std::string full = Path(path);
    std::unique_ptr<DIR, DirCloser> dir(::opendir(full.c_str()));
    if (!dir) {
        error = Reason("cannot list", path);
        return false;
    }
    names.clear();
    errno = 0;
    while (struct dirent* entry = ::readdir(dir.get())) {
        if (std::strcmp(entry->d_name, ".") == 0 || std::strcmp(entry->d_name, "..") == 0) continue;
        names.emplace_back(entry->d_name);
    }
    if (errno != 0) {
        error = Reason("cannot list", path);
        return false;
    }
    std::sort(names.begin(), names.end());
    return true;
}

bool Sysfs::Exists(const std::string& path) const {
    struct stat st;
    return ::stat(Path(path).c_str(), &st) == 0;
}

bool Sysfs::IsDirectory(const std::string& path) const {
    struct stat st;
    return ::stat(Path(path).c_str(), &st) == 0 && S_ISDIR(st.st_mode);
}

std::string Sysfs::LinkBaseName(const std::string& path) const {
    char buffer[PATH_MAX];
    ssize_t n = ::readlink(Path(path).c_str(), buffer, sizeof buffer - 1);
    if (n <= 0) return std::string();
    std::string target(buffer, static_cast<size_t>(n));
    while (target.size() > 1 && target.back() == '/') target.pop_back();
    size_t slash = target.rfind('/');
    return slash == std::string::npos ? target : target.substr(slash + 1);
}

std::string Sysfs::RealPath(const std::string& path) const {
    std::unique_ptr<char, decltype(&std::free)> resolved(::realpath(Path(path).c_str(), nullptr), &std::free);
    return resolved ? std::string(resolved.get()) : std::string();
}

}  // namespace svm

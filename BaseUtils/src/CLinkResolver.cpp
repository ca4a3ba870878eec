#include "CLinkResolver.h"

#include <limits.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>

bool CLinkResolver::Resolve(const std::string& path, std::string& target) {
    std::string name = path;
    for (int links = 0; links <= kMaxLinks; ++links) {
        struct stat info;
        // Whatever cannot be looked at is no link; opening it tells the caller why.
        if (::lstat(name.c_str(), &info) != 0 || !S_ISLNK(info.st_mode)) {
            target = name;
            return true;
        }
        char buffer[PATH_MAX];
        const ssize_t length = ::readlink(name.c_str(), buffer, sizeof buffer);
        if (length < 0) return false;
        if (static_cast<std::size_t>(length) == sizeof buffer) {
            errno = ENAMETOOLONG;
            return false;
        }
        std::string next(buffer, static_cast<std::size_t>(length));
        const std::string::size_type slash = name.rfind('/');
        if (next[0] != '/' && slash != std::string::npos) next = name.substr(0, slash + 1) + next;
        name = next;
    }
    errno = ELOOP;
    return false;
}

#include "TempDir.h"

#include <ftw.h>
#include <stdlib.h>

#include <cstdio>
#include <cstdlib>
#include <vector>

namespace audit {
namespace fleet {
namespace testing {

std::string MakeTempDir(const std::string& prefix, const std::string& base) {
    const char* tmpdir = std::getenv("TMPDIR");
    std::string parent = !base.empty() ? base : tmpdir && *tmpdir ? tmpdir : "/tmp";
    std::string pattern = parent + "/" + prefix + ".XXXXXX";
    std::vector<char> buffer(pattern.begin(), pattern.end());
    buffer.push_back('\0');
    return mkdtemp(buffer.data()) ? std::string(buffer.data()) : std::string();
}

void RemoveTree(const std::string& path) {
    nftw(
        path.c_str(),
        [](const char* name, const struct stat*, int, struct FTW*) { return std::remove(name); }, 16,
        FTW_DEPTH | FTW_PHYS);
}

}  // namespace testing
}  // namespace fleet
}  // namespace audit

#pragma once
// Temporary directories for the fleet tests and the benchmark.
#include <string>

namespace audit {
namespace fleet {
namespace testing {

// A new directory under base, by default $TMPDIR or /tmp; empty on failure.
std::string MakeTempDir(const std::string& prefix, const std::string& base = "");
// Removes path and everything below it.
void RemoveTree(const std::string& path);

}  // namespace testing
}  // namespace fleet
}  // namespace audit

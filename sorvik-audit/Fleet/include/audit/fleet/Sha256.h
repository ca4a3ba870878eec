#pragma once
// SHA-256 of a document's bytes: the content hash that makes loading the same
// document twice a no-op.
#include <string>

namespace audit {
namespace fleet {

// Lower-case hexadecimal digest of bytes.
std::string Sha256Hex(const std::string& bytes);

}  // namespace fleet
}  // namespace audit

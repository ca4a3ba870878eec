#include "audit/fleet/Sha256.h"

#include <nettle/sha2.h>

namespace audit {
namespace fleet {

std::string Sha256Hex(const std::string& bytes) {
    struct sha256_ctx context;
    sha256_init(&context);
    sha256_update(&context, bytes.size(), reinterpret_cast<const uint8_t*>(bytes.data()));
    uint8_t digest[SHA256_DIGEST_SIZE];
    sha256_digest(&context, sizeof digest, digest);
    static const char kHex[] = "0123456789abcdef";
    std::string hex;
    hex.reserve(2 * sizeof digest);
    for (uint8_t byte : digest) {
        hex += kHex[byte >> 4];
        hex += kHex[byte & 0xF];
    }
    return hex;
}

}  // namespace fleet
}  // namespace audit

// The version comparator. Input: one byte choosing the scheme, then two
// versions separated by a line end. Checks that the order is consistent:
// reversing the sides reverses it, and a version that parses equals itself.
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string>

#include "audit/VersionCompare.h"

namespace {

audit::Order Reversed(audit::Order order) {
    if (order == audit::Order::Less) return audit::Order::Greater;
    if (order == audit::Order::Greater) return audit::Order::Less;
    return order;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    if (size == 0) return 0;
    const audit::Scheme schemes[] = {audit::Scheme::Auto, audit::Scheme::Numeric, audit::Scheme::Hex,
                                     audit::Scheme::Text};
    const audit::Scheme scheme = schemes[data[0] % 4];
    const std::string text(reinterpret_cast<const char*>(data + 1), size - 1);
    const size_t split = text.find('\n');
    const std::string a = text.substr(0, split);
    const std::string b = split == std::string::npos ? a : text.substr(split + 1);
    const audit::Comparison forward = audit::CompareVersions(a, b, scheme);
    const audit::Comparison backward = audit::CompareVersions(b, a, scheme);
    if (backward.order != Reversed(forward.order)) std::abort();
    if ((forward.order == audit::Order::Incomparable) == forward.reason.empty()) std::abort();
    std::string reason;
    if (audit::VersionParses(a, scheme, reason) &&
        audit::CompareVersions(a, a, scheme).order != audit::Order::Equal)
        std::abort();
    return 0;
}

// sorvik-audit's reader of the collector's documents: the inventory in every
// form (XML in UTF-8 or UTF-16, JSON, an error document behind it) and the
// error document. Input: the document's bytes.
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string>

#include "audit/Diff.h"
#include "audit/DocumentReader.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    const std::string bytes(reinterpret_cast<const char*>(data), size);
    audit::Inventory inventory;
    std::string error;
    if (audit::ParseInventory(bytes, "fuzz", inventory, error)) {
        // A document never differs from itself.
        if (!audit::DiffInventories(inventory, inventory, nullptr).empty()) std::abort();
    } else if (error.compare(0, 4, "fuzz") != 0) {
        std::abort();
    }
    audit::ErrorDocument errors;
    if (!audit::ParseErrorDocument(bytes, "fuzz", errors, error) && error.compare(0, 4, "fuzz") != 0)
        std::abort();
    return 0;
}

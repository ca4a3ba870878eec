// The baseline loader, and the check of a small inventory against whatever
// baseline loads. Input: the baseline file's bytes.
#include "audit/Baseline.h"

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string>

#include "audit/Check.h"

namespace {

audit::Inventory Sample() {
    audit::Inventory inventory;
    inventory.systemID = "0A1B";
    inventory.os.osCode = "debian";
    const char* const versions[][3] = {{"BIOS", "BIOS 2.9.0", "2.9.0"},
                                       {"FRMW", "NVMe SSD", "GDC5602Q"},
                                       {"FRMW", "CPU microcode", "0x2b000571"},
                                       {"DRVR", "i40e", "2.22.18"},
                                       {"FRMW", "Fan", ""}};
    for (const auto& v : versions) {
        audit::Component component;
        component.componentType = v[0];
        component.name = v[1];
        component.version = v[2];
        inventory.components.push_back(component);
    }
    return inventory;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    static const audit::Inventory inventory = Sample();
    const std::string text(reinterpret_cast<const char*>(data), size);
    audit::Baseline baseline;
    std::string error;
    if (!audit::ParseBaseline(text, "fuzz.json", baseline, error)) {
        // A refusal always says where.
        if (error.compare(0, 10, "fuzz.json:") != 0) std::abort();
        return 0;
    }
    const auto verdicts = audit::CheckInventory(baseline, inventory, nullptr, true);
    if (verdicts.size() < inventory.components.size()) std::abort();
    return 0;
}

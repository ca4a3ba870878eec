#pragma once
// Which components drift compares with each other: like components of like
// systems. Stored with each component, so the database groups without
// knowing the rule.
#include <string>

#include "audit/Inventory.h"

namespace audit {
namespace fleet {

// "system S, TYPE, PCI V:D:SV:SD" for a component with PCI ids; else
// "system S, FQDD-PATTERN, NAME", the pattern being the FQDD with each run of
// digits replaced by '*' (so every host's first NIC port falls in one group);
// else "system S, TYPE, NAME".
std::string ComponentGroup(const std::string& systemID, const Component& component);

}  // namespace fleet
}  // namespace audit

#pragma once
// What changed between two inventories of one host, component by component.
#include <string>
#include <vector>

#include "audit/Inventory.h"

namespace audit {

enum class Change { Added, Removed, Changed, Unknown };

// "added", "removed", "changed", "unknown".
const char* ChangeName(Change change);

struct ComponentChange {
    Change change = Change::Changed;
    std::string key;     // ComponentKey of the component in NEW, else in OLD
    Component before;    // empty for Added
    Component after;     // empty for Removed and Unknown
    std::string reason;  // for Unknown: which failed modules may have held it
};

// Components are paired by ComponentKey; among components sharing a key,
// equal versions pair first, the rest in document order. A component left
// over on each side in the same slot (type and identity, ComponentSlot, not
// empty) is one renamed component, e.g. a BIOS whose name carries its
// version. A component of OLD missing from NEW is Unknown, not Removed, when
// a module of NEW failed (errors, or NEW's own failures): the inventory does
// not say which module reported a component. Sorted by key, then change, so
// the order modules finished in does not matter.
std::vector<ComponentChange> DiffInventories(const Inventory& before, const Inventory& after,
                                             const ErrorDocument* errors);

}  // namespace audit

#pragma once
// A baseline applied to one inventory: a verdict per component.
#include <string>
#include <vector>

#include "audit/Baseline.h"
#include "audit/Inventory.h"

namespace audit {

enum class Verdict { Compliant, Outdated, Newer, Unknown, Missing, Unmatched };

// "compliant", "outdated", "newer", "unknown", "missing", "unmatched".
const char* VerdictName(Verdict verdict);

struct ComponentVerdict {
    Component component;  // for Missing: the rule's match values in their fields
    Verdict verdict = Verdict::Unmatched;
    std::string expected;  // ExpectedText of the rule; empty for Unmatched
    std::string reason;    // why, in words, for every verdict but Compliant and Unmatched
    int rule = -1;         // index into Baseline::rules; -1 for Unmatched
};

// Verdicts in inventory order, then one Missing (or Unknown) per required rule
// that matched nothing. A module failure, from errors or inventory.failures,
// makes Unknown the verdicts of rules naming that module, and a required rule
// that matched nothing Unknown instead of Missing (the failed module may have
// held it). all: components no rule matches are listed as Unmatched.
std::vector<ComponentVerdict> CheckInventory(const Baseline& baseline, const Inventory& inventory,
                                             const ErrorDocument* errors, bool all);

// The same verdicts a component at a time, for components that are read and
// judged without keeping the inventory: Add each as it is read (the host's
// fields must be known by then, as they are in both document forms), then
// Finish once the host's failures are known.
class InventoryChecker {
public:
    // baseline and inventory must outlive the checker; inventory is read for
    // its host fields and failures only.
    InventoryChecker(const Baseline& baseline, const Inventory& inventory, bool all);
    // Room for this many verdicts, so the list is not moved as it grows.
    void Reserve(size_t components) { m_verdicts.reserve(components); }
    void Add(Component&& component);
    std::vector<ComponentVerdict> Finish(const ErrorDocument* errors);

private:
    const Baseline& m_baseline;
    const Inventory& m_inventory;
    bool m_all;
    std::vector<bool> m_matched;
    std::vector<ComponentVerdict> m_verdicts;
};

// Whether every condition of the rule holds for the component on that host.
bool RuleMatches(const Rule& rule, const Component& component, const Inventory& inventory);

// The component's stable key: componentType "/" identity "/" name, where the
// identity is the first non-empty of "fqdd=" fqdd, "instance=" componentInstance
// (the PCI address for PCI devices), "id=" componentID, "pci=" vendorID ":"
// deviceID ":" subVendorID ":" subDeviceID; empty when there is none. The same
// in every form of a document and whatever order modules finished in.
std::string ComponentKey(const Component& component);
// The key without the name: what a renamed component keeps.
std::string ComponentSlot(const Component& component);

}  // namespace audit

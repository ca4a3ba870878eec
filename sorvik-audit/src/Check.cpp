#include "audit/Check.h"

#include <fnmatch.h>

#include <algorithm>

namespace audit {
namespace {

template <typename C>
auto ComponentField(const std::string& field, C& component) -> decltype(&component.name) {
    if (field == "name") return &component.name;
    if (field == "componentType") return &component.componentType;
    if (field == "componentID") return &component.componentID;
    if (field == "componentInstance") return &component.componentInstance;
    if (field == "fqdd") return &component.fqdd;
    if (field == "vendorID") return &component.vendorID;
    if (field == "deviceID") return &component.deviceID;
    if (field == "subVendorID") return &component.subVendorID;
    if (field == "subDeviceID") return &component.subDeviceID;
    return nullptr;
}

const std::string* HostField(const std::string& field, const Inventory& inventory) {
    if (field == "systemID") return &inventory.systemID;
    if (field == "osName") return &inventory.os.name;
    if (field == "osVendor") return &inventory.os.osVendor;
    if (field == "osCode") return &inventory.os.osCode;
    if (field == "osArch") return &inventory.os.osArch;
    if (field == "majorVersion") return &inventory.os.majorVersion;
    if (field == "minorVersion") return &inventory.os.minorVersion;
    return nullptr;
}

bool HostMatches(const Rule& rule, const Inventory& inventory) {
    for (const MatchCondition& condition : rule.match) {
        const std::string* value = HostField(condition.field, inventory);
        if (value != nullptr && *value != condition.value) return false;
    }
    return true;
}

// The verdict of a version against the rule's bounds.
void Judge(const Rule& rule, ComponentVerdict& verdict) {
    const std::string& version = verdict.component.version;
    if (version.empty()) {
        verdict.verdict = Verdict::Unknown;
        verdict.reason = "no version reported";
        return;
    }
    auto compare = [&](const std::string& bound, Order& order) {
        const Comparison comparison = CompareVersions(version, bound, rule.scheme);
        order = comparison.order;
        if (order == Order::Incomparable) {
            verdict.verdict = Verdict::Unknown;
            verdict.reason = comparison.reason;
            return false;
        }
        return true;
    };
    Order order;
    verdict.verdict = Verdict::Compliant;
    if (rule.hasExact) {
        if (!compare(rule.exact, order)) return;
        if (order == Order::Less) verdict.verdict = Verdict::Outdated, verdict.reason = "below " + rule.exact;
        if (order == Order::Greater) verdict.verdict = Verdict::Newer, verdict.reason = "above " + rule.exact;
        return;
    }
    if (!rule.allowed.empty()) {
        bool below = true, above = true;
        for (const std::string& allowed : rule.allowed) {
            if (!compare(allowed, order)) return;
            if (order == Order::Equal) return;
            below = below && order == Order::Less;
            above = above && order == Order::Greater;
        }
        if (below)
            verdict.verdict = Verdict::Outdated, verdict.reason = "below every allowed version";
        else if (above)
            verdict.verdict = Verdict::Newer, verdict.reason = "above every allowed version";
        else
            verdict.verdict = Verdict::Unknown, verdict.reason = "between allowed versions, not one of them";
        return;
    }
    if (rule.hasMin) {
        if (!compare(rule.min, order)) return;
        if (order == Order::Less) {
            verdict.verdict = Verdict::Outdated;
            verdict.reason = "below " + rule.min;
            return;
        }
    }
    if (rule.hasMax) {
        if (!compare(rule.max, order)) return;
        if (order == Order::Greater) {
            verdict.verdict = Verdict::Newer;
            verdict.reason = "above " + rule.max;
        }
    }
}

std::vector<std::string> FailedModules(const Inventory& inventory, const ErrorDocument* errors) {
    std::vector<std::string> modules;
    for (const ModuleFailure& failure : inventory.failures) modules.push_back(failure.module);
    if (errors != nullptr)
        for (const ModuleFailure& failure : errors->failures) modules.push_back(failure.module);
    std::sort(modules.begin(), modules.end());
    modules.erase(std::unique(modules.begin(), modules.end()), modules.end());
    return modules;
}

std::string Joined(const std::vector<std::string>& items) {
    std::string text;
    for (const std::string& item : items) text += (text.empty() ? "" : ", ") + item;
    return text;
}

}  // namespace

const char* VerdictName(Verdict verdict) {
    switch (verdict) {
        case Verdict::Compliant:
            return "compliant";
        case Verdict::Outdated:
            return "outdated";
        case Verdict::Newer:
            return "newer";
        case Verdict::Unknown:
            return "unknown";
        case Verdict::Missing:
            return "missing";
        case Verdict::Unmatched:
            return "unmatched";
    }
    return "unknown";
}

bool RuleMatches(const Rule& rule, const Component& component, const Inventory& inventory) {
    for (const MatchCondition& condition : rule.match) {
        const std::string* value = ComponentField(condition.field, component);
        if (value == nullptr) value = HostField(condition.field, inventory);
        if (value == nullptr) return false;
        if (condition.field == "name") {
            if (fnmatch(condition.value.c_str(), value->c_str(), 0) != 0) return false;
        } else if (*value != condition.value) {
            return false;
        }
    }
    return true;
}

InventoryChecker::InventoryChecker(const Baseline& baseline, const Inventory& inventory, bool all)
    : m_baseline(baseline), m_inventory(inventory), m_all(all), m_matched(baseline.rules.size(), false) {}

void InventoryChecker::Add(Component&& component) {
    int first = -1;
    for (size_t r = 0; r < m_baseline.rules.size(); ++r) {
        if (!RuleMatches(m_baseline.rules[r], component, m_inventory)) continue;
        m_matched[r] = true;
        if (first < 0) first = static_cast<int>(r);
    }
    if (first < 0 && !m_all) return;
    ComponentVerdict verdict;
    verdict.component = std::move(component);
    verdict.rule = first;
    if (first >= 0) {
        const Rule& rule = m_baseline.rules[static_cast<size_t>(first)];
        verdict.expected = ExpectedText(rule);
        Judge(rule, verdict);
    }
    m_verdicts.push_back(std::move(verdict));
}

std::vector<ComponentVerdict> InventoryChecker::Finish(const ErrorDocument* errors) {
    const std::vector<std::string> failed = FailedModules(m_inventory, errors);
    // Failures are known only at the end of a stream (an error document may
    // follow the inventory), so a failed module's verdicts are set here.
    for (ComponentVerdict& verdict : m_verdicts) {
        if (verdict.rule < 0) continue;
        const Rule& rule = m_baseline.rules[static_cast<size_t>(verdict.rule)];
        if (!rule.module.empty() && std::binary_search(failed.begin(), failed.end(), rule.module)) {
            verdict.verdict = Verdict::Unknown;
            verdict.reason = "module " + rule.module + " failed";
        }
    }
    for (size_t r = 0; r < m_baseline.rules.size(); ++r) {
        const Rule& rule = m_baseline.rules[r];
        if (!rule.required || m_matched[r]) continue;
        if (!HostMatches(rule, m_inventory)) continue;  // a rule for other hosts
        ComponentVerdict verdict;
        for (const MatchCondition& condition : rule.match)
            if (std::string* field = ComponentField(condition.field, verdict.component))
                *field = condition.value;
        verdict.rule = static_cast<int>(r);
        verdict.expected = ExpectedText(rule);
        const bool moduleFailed = rule.module.empty()
                                      ? !failed.empty()
                                      : std::binary_search(failed.begin(), failed.end(), rule.module);
        if (moduleFailed) {
            verdict.verdict = Verdict::Unknown;
            verdict.reason = "no component matched, and " +
                             (rule.module.empty() ? "modules " + Joined(failed) : "module " + rule.module) +
                             " failed";
        } else {
            verdict.verdict = Verdict::Missing;
            verdict.reason = "required, and no component matched";
        }
        m_verdicts.push_back(std::move(verdict));
    }
    return std::move(m_verdicts);
}

std::vector<ComponentVerdict> CheckInventory(const Baseline& baseline, const Inventory& inventory,
                                             const ErrorDocument* errors, bool all) {
    InventoryChecker checker(baseline, inventory, all);
    for (const Component& component : inventory.components) checker.Add(Component(component));
    return checker.Finish(errors);
}

std::string ComponentSlot(const Component& component) {
    std::string identity;
    if (!component.fqdd.empty())
        identity = "fqdd=" + component.fqdd;
    else if (!component.componentInstance.empty())
        identity = "instance=" + component.componentInstance;
    else if (!component.componentID.empty())
        identity = "id=" + component.componentID;
    else if (!(component.vendorID + component.deviceID + component.subVendorID + component.subDeviceID)
                  .empty())
        identity = "pci=" + component.vendorID + ":" + component.deviceID + ":" + component.subVendorID +
                   ":" + component.subDeviceID;
    return component.componentType + "/" + identity;
}

std::string ComponentKey(const Component& component) {
    return ComponentSlot(component) + "/" + component.name;
}

}  // namespace audit

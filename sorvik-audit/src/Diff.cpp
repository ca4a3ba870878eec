#include "audit/Diff.h"

#include <algorithm>
#include <map>
#include <unordered_map>

#include "audit/Check.h"

namespace audit {
namespace {

using Group = std::vector<const Component*>;

// The components of both sides that share one key.
struct Sides {
    Group before, after;
};

// Drops the components of each side whose version the other side has too,
// one for one.
void DropEqualVersions(Group& before, Group& after) {
    for (auto b = before.begin(); b != before.end();) {
        auto a = std::find_if(after.begin(), after.end(),
                              [&](const Component* c) { return c->version == (*b)->version; });
        if (a == after.end()) {
            ++b;
            continue;
        }
        after.erase(a);
        b = before.erase(b);
    }
}

}  // namespace

const char* ChangeName(Change change) {
    switch (change) {
        case Change::Added:
            return "added";
        case Change::Removed:
            return "removed";
        case Change::Changed:
            return "changed";
        case Change::Unknown:
            return "unknown";
    }
    return "unknown";
}

std::vector<ComponentChange> DiffInventories(const Inventory& before, const Inventory& after,
                                             const ErrorDocument* errors) {
    // One table keyed by OLD's components; NEW's join them or are added.
    std::unordered_map<std::string, Sides> keyed;
    keyed.reserve(before.components.size());
    for (const Component& component : before.components)
        keyed[ComponentKey(component)].before.push_back(&component);
    std::vector<ComponentChange> changes;
    Group removed, added;
    for (const Component& component : after.components) {
        auto found = keyed.find(ComponentKey(component));
        if (found == keyed.end())
            added.push_back(&component);
        else
            found->second.after.push_back(&component);
    }
    for (auto& entry : keyed) {
        Group& left = entry.second.before;
        Group& right = entry.second.after;
        DropEqualVersions(left, right);
        // By version, so the pairing does not follow the order modules finished in.
        const auto byVersion = [](const Component* a, const Component* b) { return a->version < b->version; };
        std::stable_sort(left.begin(), left.end(), byVersion);
        std::stable_sort(right.begin(), right.end(), byVersion);
        const size_t paired = std::min(left.size(), right.size());
        for (size_t i = 0; i < paired; ++i)
            changes.push_back({Change::Changed, entry.first, *left[i], *right[i], ""});
        removed.insert(removed.end(), left.begin() + static_cast<long>(paired), left.end());
        added.insert(added.end(), right.begin() + static_cast<long>(paired), right.end());
    }
    std::unordered_map<std::string, Sides>().swap(keyed);

    // A component alone in its slot on both sides was renamed, not replaced.
    std::map<std::string, std::pair<Group, Group>> slots;
    for (const Component* c : removed) slots[ComponentSlot(*c)].first.push_back(c);
    for (const Component* c : added) slots[ComponentSlot(*c)].second.push_back(c);
    std::vector<std::string> failed;
    for (const ModuleFailure& failure : after.failures) failed.push_back(failure.module);
    if (errors != nullptr)
        for (const ModuleFailure& failure : errors->failures) failed.push_back(failure.module);
    std::sort(failed.begin(), failed.end());
    failed.erase(std::unique(failed.begin(), failed.end()), failed.end());
    std::string failedText;
    for (const std::string& module : failed) failedText += (failedText.empty() ? "" : ", ") + module;

    for (auto& slot : slots) {
        Group& gone = slot.second.first;
        Group& come = slot.second.second;
        const bool identified = slot.first.back() != '/';
        if (identified && gone.size() == 1 && come.size() == 1) {
            changes.push_back({Change::Changed, ComponentKey(*come[0]), *gone[0], *come[0], ""});
            continue;
        }
        for (const Component* c : gone) {
            if (failed.empty())
                changes.push_back({Change::Removed, ComponentKey(*c), *c, Component(), ""});
            else
                changes.push_back({Change::Unknown, ComponentKey(*c), *c, Component(),
                                   "not in NEW, and failed modules may have held it: " + failedText});
        }
        for (const Component* c : come)
            changes.push_back({Change::Added, ComponentKey(*c), Component(), *c, ""});
    }
    std::sort(changes.begin(), changes.end(), [](const ComponentChange& a, const ComponentChange& b) {
        if (a.key != b.key) return a.key < b.key;
        if (a.change != b.change) return a.change < b.change;
        if (a.before.version != b.before.version) return a.before.version < b.before.version;
        return a.after.version < b.after.version;
    });
    return changes;
}

}  // namespace audit

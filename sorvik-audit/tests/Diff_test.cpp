#include "audit/Diff.h"

#include <gtest/gtest.h>

#include "audit/DiffReport.h"

namespace audit {
namespace {

Component Make(const std::string& type, const std::string& name, const std::string& version,
               const std::string& fqdd = "") {
    Component component;
    component.componentType = type;
    component.name = name;
    component.version = version;
    component.fqdd = fqdd;
    return component;
}

Inventory Host(std::vector<Component> components, std::vector<ModuleFailure> failures = {}) {
    Inventory inventory;
    inventory.components = std::move(components);
    inventory.failures = std::move(failures);
    return inventory;
}

std::string Summary(const std::vector<ComponentChange>& changes) {
    std::string text;
    for (const ComponentChange& c : changes) {
        text += (text.empty() ? "" : "; ") + std::string(ChangeName(c.change)) + " " + c.key;
        if (c.change != Change::Added) text += " " + c.before.version;
        if (c.change == Change::Added || c.change == Change::Changed) text += " -> " + c.after.version;
    }
    return text;
}

const Component kBios = Make("BIOS", "BIOS", "2.9.0", "BIOS.System.1");
const Component kNic = Make("FRMW", "NIC", "16.35.1012", "NIC.Slot.1-1");
const Component kNic2 = Make("FRMW", "NIC", "16.35.1012", "NIC.Slot.1-2");
const Component kFan = Make("FRMW", "Fan", "1.0");

TEST(DiffTest, ChangesBetweenRuns) {
    const struct {
        const char* what;
        Inventory before, after;
        std::string changes;
    } rows[] = {
        {"same run", Host({kBios, kNic, kNic2, kFan}), Host({kBios, kNic, kNic2, kFan}), ""},
        {"modules in another order", Host({kBios, kNic, kNic2, kFan}), Host({kFan, kNic2, kBios, kNic}), ""},
        {"version changed", Host({kBios, kNic}),
         Host({kBios, Make("FRMW", "NIC", "16.35.2000", "NIC.Slot.1-1")}),
         "changed FRMW/fqdd=NIC.Slot.1-1/NIC 16.35.1012 -> 16.35.2000"},
        {"added and removed", Host({kBios, kNic}), Host({kBios, kNic2}),
         "removed FRMW/fqdd=NIC.Slot.1-1/NIC 16.35.1012; added FRMW/fqdd=NIC.Slot.1-2/NIC -> 16.35.1012"},
        {"a name carrying its version is one component",
         Host({Make("BIOS", "BIOS 2.9.0", "2.9.0", "BIOS.System.1")}),
         Host({Make("BIOS", "BIOS 2.17.1", "2.17.1", "BIOS.System.1")}),
         "changed BIOS/fqdd=BIOS.System.1/BIOS 2.17.1 2.9.0 -> 2.17.1"},
        {"no identity: renamed is removed and added", Host({kFan}), Host({Make("FRMW", "Fan 2", "1.1")}),
         "removed FRMW//Fan 1.0; added FRMW//Fan 2 -> 1.1"},
        {"same key twice, one changed, order swapped", Host({kFan, Make("FRMW", "Fan", "2.0")}),
         Host({Make("FRMW", "Fan", "2.1"), kFan}), "changed FRMW//Fan 2.0 -> 2.1"},
        {"gone while a module failed is unknown", Host({kBios, kNic}), Host({kBios}, {{"/nicinv", "x"}}),
         "unknown FRMW/fqdd=NIC.Slot.1-1/NIC 16.35.1012"},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.what);
        EXPECT_EQ(row.changes, Summary(DiffInventories(row.before, row.after, nullptr)));
    }
}

TEST(DiffTest, ErrorDocumentOfNewTurnsRemovedIntoUnknown) {
    ErrorDocument errors;
    errors.failures = {{"/storageinv", "Configured program execution failure"}};
    const auto changes = DiffInventories(Host({kBios, kNic}), Host({kBios}), &errors);
    ASSERT_EQ(1u, changes.size());
    EXPECT_EQ(Change::Unknown, changes[0].change);
    EXPECT_EQ("not in NEW, and failed modules may have held it: /storageinv", changes[0].reason);
}

TEST(DiffTest, ReportsCarryChangeAndVersions) {
    Inventory before = Host({kBios, kFan}),
              after = Host({Make("BIOS", "BIOS", "2.17.1", "BIOS.System.1"), kNic});
    before.source = "old.xml";
    after.source = "new.json";
    const auto changes = DiffInventories(before, after, nullptr);
    EXPECT_EQ(
        "CHANGE   KEY                           FROM   TO\n"
        "changed  BIOS/fqdd=BIOS.System.1/BIOS  2.9.0  2.17.1\n"
        "removed  FRMW//Fan                     1.0\n"
        "added    FRMW/fqdd=NIC.Slot.1-1/NIC           16.35.1012\n"
        "1 added, 1 removed, 1 changed\n",
        DiffTable(changes, false));
    EXPECT_EQ("no change\n", DiffTable({}, false));
    const std::string json = DiffJson(changes, before, after);
    EXPECT_NE(std::string::npos, json.find("\"reportVersion\": 1"));
    EXPECT_NE(std::string::npos, json.find("\"old\": \"old.xml\",\n  \"new\": \"new.json\""));
    EXPECT_NE(std::string::npos,
              json.find("\"change\": \"changed\",\n      \"key\": \"BIOS/fqdd=BIOS.System.1/BIOS\","
                        "\n      \"from\": \"2.9.0\",\n      \"to\": \"2.17.1\""));
    EXPECT_NE(std::string::npos,
              json.find("\"summary\": {\"added\": 1, \"removed\": 1, \"changed\": 1, \"unknown\": 0}"));
    EXPECT_NE(std::string::npos, DiffTable(changes, true).find("\033[32madded\033[0m"));
}

}  // namespace
}  // namespace audit

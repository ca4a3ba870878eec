#include "audit/Check.h"

#include <gtest/gtest.h>

namespace audit {
namespace {

Component Make(const std::string& type, const std::string& name, const std::string& version,
               const std::string& fqdd = "", const std::string& instance = "") {
    Component component;
    component.componentType = type;
    component.name = name;
    component.version = version;
    component.fqdd = fqdd;
    component.componentInstance = instance;
    component.vendorID = instance.empty() ? "" : "8086";
    return component;
}

Inventory Host() {
    Inventory inventory;
    inventory.systemID = "0A1B";
    inventory.os.osCode = "debian";
    inventory.components = {Make("BIOS", "BIOS 2.9.0", "2.9.0", "BIOS.System.1"),
                            Make("FRMW", "iDRAC", "7.00.00.171", "iDRAC.Embedded.1"),
                            Make("DRVR", "i40e", "2.22.18", "", "0000:3b:00.0"),
                            Make("FRMW", "NVMe GDC5602Q", "GDC5602Q", "Disk.Bay.0"),
                            Make("FRMW", "Fan", "", "Fan.1")};
    return inventory;
}

Baseline Parse(const std::string& rules) {
    Baseline baseline;
    std::string error;
    EXPECT_TRUE(ParseBaseline("{\"schemaVersion\": 1, \"rules\": [" + rules + "]}", "b", baseline, error))
        << error;
    return baseline;
}

std::string Summary(const std::vector<ComponentVerdict>& verdicts) {
    std::string text;
    for (const ComponentVerdict& v : verdicts) {
        text += (text.empty() ? "" : "; ") + v.component.name + "=" + VerdictName(v.verdict);
        if (!v.reason.empty()) text += " (" + v.reason + ")";
    }
    return text;
}

// One baseline against the same host: the verdicts each rule gives.
TEST(CheckTest, RulesGiveVerdicts) {
    const struct {
        const char* rules;
        bool all;
        std::string verdicts;
    } rows[] = {
        {R"({"match": {"componentType": "BIOS"}, "min": "2.17.1"})", false,
         "BIOS 2.9.0=outdated (below 2.17.1)"},
        {R"({"match": {"name": "BIOS *"}, "min": "2.9"})", false, "BIOS 2.9.0=compliant"},
        {R"({"match": {"name": "iDRAC"}, "max": "6.10"})", false, "iDRAC=newer (above 6.10)"},
        {R"({"match": {"name": "iDRAC"}, "min": "6.10", "max": "7.1"})", false, "iDRAC=compliant"},
        {R"({"match": {"name": "iDRAC"}, "exact": "7.00.00.171"})", false, "iDRAC=compliant"},
        {R"({"match": {"name": "iDRAC"}, "allowed": ["6.10.80.00", "7.00.00.171"]})", false,
         "iDRAC=compliant"},
        {R"({"match": {"name": "iDRAC"}, "allowed": ["7.10", "7.20"]})", false,
         "iDRAC=outdated (below every allowed version)"},
        {R"({"match": {"name": "iDRAC"}, "allowed": ["6", "7.10"]})", false,
         "iDRAC=unknown (between allowed versions, not one of them)"},
        {R"({"match": {"name": "iDRAC"}, "min": "A12"})", false,
         "iDRAC=unknown (\"7.00.00.171\" and \"A12\" are shaped differently)"},
        {R"({"match": {"fqdd": "Disk.Bay.0"}, "exact": "GDC5602Q", "scheme": "text"})", false,
         "NVMe GDC5602Q=compliant"},
        {R"({"match": {"name": "Fan"}, "min": "1.0"})", false, "Fan=unknown (no version reported)"},
        {R"({"match": {"componentInstance": "0000:3b:00.0", "vendorID": "8086"}})", false, "i40e=compliant"},
        // Host conditions.
        {R"({"match": {"systemID": "0A1B", "name": "i40e"}, "min": "2.23"})", false,
         "i40e=outdated (below 2.23)"},
        {R"({"match": {"systemID": "FFFF", "name": "i40e"}, "min": "2.23", "required": true})", false, ""},
        {R"({"match": {"osCode": "debian", "componentType": "DRVR"}})", false, "i40e=compliant"},
        // The first matching rule decides.
        {R"({"match": {"name": "iDRAC"}, "min": "8"}, {"match": {"componentType": "FRMW"}, "min": "1"})",
         false,
         "iDRAC=outdated (below 8); NVMe GDC5602Q=unknown (\"GDC5602Q\" and \"1\" are shaped differently); "
         "Fan=unknown "
         "(no version reported)"},
        {R"({"match": {"name": "PERC*"}, "min": "51", "required": true})", false,
         "PERC*=missing (required, and no component matched)"},
        {R"({"match": {"componentType": "DRVR"}})", true,
         "BIOS 2.9.0=unmatched; iDRAC=unmatched; i40e=compliant; NVMe GDC5602Q=unmatched; Fan=unmatched"},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.rules);
        EXPECT_EQ(row.verdicts, Summary(CheckInventory(Parse(row.rules), Host(), nullptr, row.all)));
    }
}

// The inventory does not say which module reported a component: a failure
// turns unknown only what a rule ties to that module, and any required rule
// with nothing matched.
TEST(CheckTest, FailedModulesMakeVerdictsUnknown) {
    const Baseline baseline = Parse(R"({"match": {"name": "PERC*"}, "min": "51", "required": true},
        {"match": {"fqdd": "Disk.Bay.0"}, "exact": "GDC5302Q", "module": "/storageinv"},
        {"match": {"name": "iDRAC"}, "min": "8", "module": "/bmcinv"})");
    ErrorDocument errors;
    errors.failures = {{"/storageinv", "Configured program execution failure"}};
    EXPECT_EQ(
        "iDRAC=outdated (below 8); NVMe GDC5602Q=unknown (module /storageinv failed); PERC*=unknown (no "
        "component matched, and modules /storageinv failed)",
        Summary(CheckInventory(baseline, Host(), &errors, false)));
    Inventory streamed = Host();
    streamed.failures = {{"/bmcinv", "x"}};
    EXPECT_EQ(
        "iDRAC=unknown (module /bmcinv failed); NVMe GDC5602Q=newer (above GDC5302Q); PERC*=unknown (no "
        "component matched, and modules /bmcinv failed)",
        Summary(CheckInventory(baseline, streamed, nullptr, false)));
    EXPECT_EQ(
        "iDRAC=outdated (below 8); NVMe GDC5602Q=newer (above GDC5302Q); PERC*=missing (required, and no "
        "component matched)",
        Summary(CheckInventory(baseline, Host(), nullptr, false)));
}

TEST(CheckTest, KeysNameTypeIdentityAndName) {
    Component pci = Make("DRVR", "i40e", "1", "", "0000:3b:00.0");
    Component fqdd = Make("BIOS", "BIOS", "1", "BIOS.System.1", "1");
    Component id = Make("FRMW", "Fan", "1");
    id.componentID = "25";
    Component bare = Make("FRMW", "NIC FW", "1");
    bare.vendorID = "14e4";
    bare.deviceID = "16d7";
    EXPECT_EQ("DRVR/instance=0000:3b:00.0/i40e", ComponentKey(pci));
    EXPECT_EQ("BIOS/fqdd=BIOS.System.1/BIOS", ComponentKey(fqdd));
    EXPECT_EQ("FRMW/id=25/Fan", ComponentKey(id));
    EXPECT_EQ("FRMW/pci=14e4:16d7::/NIC FW", ComponentKey(bare));
    EXPECT_EQ("FRMW//x", ComponentKey(Make("FRMW", "x", "1")));
    EXPECT_EQ("BIOS/fqdd=BIOS.System.1", ComponentSlot(fqdd));
}

}  // namespace
}  // namespace audit

#include "audit/fleet/ComponentGroup.h"

#include <gtest/gtest.h>

#include "FleetTestSupport.h"

namespace audit {
namespace fleet {
namespace {

using testing::TestComponent;

TEST(ComponentGroupTest, GroupsByPciIdsElseFqddPatternElseTypeAndName) {
    struct Row {
        std::string system;
        Component component;
        const char* group;
    };
    Component withSubIds = TestComponent("FRMW", "Ethernet 10G", "NIC.Slot.2-1-1", "8086", "1572", "20.5.13");
    withSubIds.subVendorID = "8086";
    withSubIds.subDeviceID = "0006";
    const Row rows[] = {
        {"0A2B", withSubIds, "system 0A2B, FRMW, PCI 8086:1572:8086:0006"},
        {"0A2B", TestComponent("FRMW", "PERC H755", "RAID.Integrated.1-1", "", "", "52.16.1"),
         "system 0A2B, RAID.Integrated.*-*, PERC H755"},
        // Instance numbers of any length fall in one group.
        {"0A2B", TestComponent("FRMW", "Disk", "Disk.Bay.12:Enclosure.Internal.0-1", "", "", "B02"),
         "system 0A2B, Disk.Bay.*:Enclosure.Internal.*-*, Disk"},
        {"0A2B", TestComponent("BIOS", "BIOS", "", "", "", "1.9.2"), "system 0A2B, BIOS, BIOS"},
        {"", TestComponent("BIOS", "BIOS", "", "", "", "1.9.2"), "system , BIOS, BIOS"},
        // A device id alone still identifies the part.
        {"0A2B", TestComponent("FRMW", "NVMe", "Disk.Bay.1", "", "a808", "3B2QGXA7"),
         "system 0A2B, FRMW, PCI :a808::"},
    };
    for (const Row& row : rows) EXPECT_EQ(ComponentGroup(row.system, row.component), row.group);
}

}  // namespace
}  // namespace fleet
}  // namespace audit

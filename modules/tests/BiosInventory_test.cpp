#include "BiosInventory.h"

#include <gtest/gtest.h>

#include "ModuleTestSupport.h"

using svmtest::Collect;
using svmtest::Failures;
using svmtest::Select;

namespace svm {
namespace {

class BiosInventoryTest : public ::testing::Test {
protected:
    void SetUp() override {
        root.Write("/sys/class/dmi/id/bios_vendor", "Example Firmware Inc.\n");
        root.Write("/sys/class/dmi/id/bios_version", "2.17.1\n");
        root.Write("/sys/class/dmi/id/bios_date", "03/14/2023\n");
        root.Write("/sys/class/dmi/id/product_sku", "SKU=0A1B;Model=X9\n");
        root.Write("/sys/class/dmi/id/product_name", "Server X9\n");
        std::string cpuinfo;
        for (const char* cpu : {"0\t0x2007006", "0\t0x2007006", "1\t0x2007007"})
            cpuinfo += "processor\t: 0\nmodel name\t: Example CPU\nphysical id\t: " + std::string(cpu, 1) +
                       "\nmicrocode\t: " + (cpu + 2) + "\n\n";
        root.Write("/proc/cpuinfo", cpuinfo);
    }
    std::string SystemId() {
        return Select(Collect(CollectBiosInventory, root), "/SVMInventory/System")[0]["systemID"];
    }
    svmtest::FakeRoot root;
};

TEST_F(BiosInventoryTest, BiosAndOneMicrocodeDevicePerSocket) {
    const std::string xml = Collect(CollectBiosInventory, root);
    auto bios = Select(xml, "/SVMInventory/Device[@componentID='159' and @FQDD='BIOS.System.1']/Application");
    ASSERT_EQ(1u, bios.size()) << xml;
    EXPECT_EQ("BIOS|2.17.1|Example Firmware Inc. BIOS (03/14/2023)",
              bios[0]["componentType"] + "|" + bios[0]["version"] + "|" + bios[0]["display"]);
    auto cpus = Select(xml, "/SVMInventory/Device[starts-with(@FQDD,'CPU.')]");
    auto microcode =
        Select(xml, "/SVMInventory/Device[starts-with(@FQDD,'CPU.')]/Application[@componentType='FRMW']");
    ASSERT_EQ(2u, cpus.size());
    ASSERT_EQ(2u, microcode.size());
    EXPECT_EQ("CPU.Socket.0 Example CPU 0x2007006",
              cpus[0]["FQDD"] + " " + cpus[0]["display"] + " " + microcode[0]["version"]);
    EXPECT_EQ("CPU.Socket.1 0x2007007", cpus[1]["FQDD"] + " " + microcode[1]["version"]);
    EXPECT_TRUE(Failures(xml).empty());
}

TEST_F(BiosInventoryTest, SystemIdIsTheSkuElseTheProductNameElseAFailure) {
    EXPECT_EQ("SKU=0A1B;Model=X9", SystemId());
    root.Write("/sys/class/dmi/id/product_sku", "To Be Filled By O.E.M.\n");
    EXPECT_EQ("Server X9", SystemId());
    root.Write("/sys/class/dmi/id/product_name", "System Product Name\n");
    const std::string xml = Collect(CollectBiosInventory, root);
    EXPECT_EQ(0u, Select(xml, "//System").size());
    ASSERT_EQ(1u, Failures(xml).size());
    EXPECT_NE(std::string::npos, Failures(xml)[0].find("product_sku"));
}

TEST(BiosInventoryFailureTest, NoDmiOrCpuinfoGivesFailuresWithMessages) {
    svmtest::FakeRoot root;
    const std::string xml = Collect(CollectBiosInventory, root);
    EXPECT_EQ(0u, Select(xml, "//Device").size());
    auto failures = Failures(xml);
    ASSERT_EQ(3u, failures.size()) << xml;  // BIOS, system id, cpuinfo
    EXPECT_NE(std::string::npos, failures[0].find("bios_version"));
    EXPECT_NE(std::string::npos, failures[2].find("/proc/cpuinfo"));
    auto sockets = ParseMicrocode("processor : 0\nmicrocode : 0xde\n\nprocessor : 1\nmicrocode : 0xde\n");
    ASSERT_EQ(1u, sockets.size());  // no physical id: one socket
    EXPECT_EQ("0 0xde", sockets[0].socket + " " + sockets[0].revision);
}

}  // namespace
}  // namespace svm

#include "BiosInventory.h"

#include <gtest/gtest.h>

#include "ModuleTestSupport.h"

using svmtest::FakeRoot;
using svmtest::Select;

namespace svm {
namespace {

const char* const kCpuinfo =
    "processor\t: 0\n"
    "vendor_id\t: GenuineIntel\n"
    "model name\t: Example CPU @ 2.10GHz\n"
    "physical id\t: 0\n"
    "microcode\t: 0x2007006\n"
    "\n"
    "processor\t: 1\n"
    "model name\t: Example CPU @ 2.10GHz\n"
    "physical id\t: 0\n"
    "microcode\t: 0x2007006\n"
    "\n"
    "processor\t: 2\n"
    "model name\t: Example CPU @ 2.10GHz\n"
    "physical id\t: 1\n"
    "microcode\t: 0x2007007\n"
    "\n";

std::string Collect(const FakeRoot& root) {
    SvmDocument doc;
    ModuleOptions options;
    options.root = root.Path();
    CollectBiosInventory(options, doc);
    return doc.ToString();
}

class BiosInventoryTest : public ::testing::Test {
  protected:
    void SetUp() override {
        root.Write("/sys/class/dmi/id/bios_vendor", "Example Firmware Inc.\n");
        root.Write("/sys/class/dmi/id/bios_version", "2.17.1\n");
        root.Write("/sys/class/dmi/id/bios_date", "03/14/2023\n");
        root.Write("/sys/class/dmi/id/product_sku", "SKU=0A1B;Model=X9\n");
        root.Write("/sys/class/dmi/id/product_name", "Server X9\n");
        root.Write("/proc/cpuinfo", kCpuinfo);
    }
    FakeRoot root;
};

TEST_F(BiosInventoryTest, BiosIsComponent159WithBiosApplication) {
    std::string xml = Collect(root);
    auto bios = Select(xml, "/SVMInventory/Device[@componentID='159']");
    ASSERT_EQ(1u, bios.size()) << xml;
    EXPECT_EQ(0u, bios[0].count("vendorID"));
    EXPECT_EQ("BIOS.System.1", bios[0]["FQDD"]);
    auto apps = Select(xml, "/SVMInventory/Device[@componentID='159']/Application");
    ASSERT_EQ(1u, apps.size());
    EXPECT_EQ("BIOS", apps[0]["componentType"]);
    EXPECT_EQ("2.17.1", apps[0]["version"]);
    EXPECT_EQ("Example Firmware Inc. BIOS (03/14/2023)", apps[0]["display"]);
    EXPECT_EQ(0u, Select(xml, "//SPStatus").size());
}

TEST_F(BiosInventoryTest, SystemIdIsTheSkuElseTheProductName) {
    EXPECT_EQ("SKU=0A1B;Model=X9", Select(Collect(root), "/SVMInventory/System")[0]["systemID"]);
    root.Write("/sys/class/dmi/id/product_sku", "To Be Filled By O.E.M.\n");
    EXPECT_EQ("Server X9", Select(Collect(root), "/SVMInventory/System")[0]["systemID"]);
}

TEST_F(BiosInventoryTest, NoUsableSystemIdIsAFailureNotAnEmptySystem) {
    root.Write("/sys/class/dmi/id/product_sku", "Default string\n");
    root.Write("/sys/class/dmi/id/product_name", "System Product Name\n");
    std::string xml = Collect(root);
    EXPECT_EQ(0u, Select(xml, "//System").size());
    auto status = Select(xml, "/SVMInventory/SPStatus[@result='false']/Message");
    ASSERT_EQ(1u, status.size());
    EXPECT_NE(std::string::npos, status[0]["#text"].find("product_sku"));
}

TEST_F(BiosInventoryTest, OneMicrocodeDevicePerSocket) {
    auto apps = Select(Collect(root), "/SVMInventory/Device[starts-with(@FQDD,'CPU.')]/Application");
    ASSERT_EQ(2u, apps.size());
    EXPECT_EQ("FRMW", apps[0]["componentType"]);
    EXPECT_EQ("0x2007006", apps[0]["version"]);
    EXPECT_EQ("0x2007007", apps[1]["version"]);
    auto devices = Select(Collect(root), "/SVMInventory/Device[starts-with(@FQDD,'CPU.')]");
    EXPECT_EQ("CPU.Socket.0", devices[0]["FQDD"]);
    EXPECT_EQ("CPU.Socket.1", devices[1]["FQDD"]);
    EXPECT_EQ("Example CPU @ 2.10GHz", devices[0]["display"]);
}

TEST_F(BiosInventoryTest, ProcessorsWithoutMicrocodeLineGiveNothing) {
    root.Write("/proc/cpuinfo", "processor\t: 0\nBogoMIPS\t: 50.00\n\n");
    std::string xml = Collect(root);
    EXPECT_EQ(0u, Select(xml, "//Device[starts-with(@FQDD,'CPU.')]").size());
    EXPECT_EQ(0u, Select(xml, "//SPStatus").size());
}

TEST(BiosInventoryFailureTest, NoDmiGivesFailuresWithMessages) {
    FakeRoot root;
    std::string xml = Collect(root);
    EXPECT_EQ(0u, Select(xml, "//Device").size());
    auto status = Select(xml, "/SVMInventory/SPStatus[@result='false']/Message");
    ASSERT_EQ(3u, status.size()) << xml;  // BIOS, system id, cpuinfo
    EXPECT_NE(std::string::npos, status[0]["#text"].find("bios_version"));
    EXPECT_NE(std::string::npos, status[2]["#text"].find("/proc/cpuinfo"));
}

TEST(MicrocodeParseTest, SocketlessCpuinfoCountsAsOneSocket) {
    auto sockets = ParseMicrocode("processor : 0\nmicrocode : 0xde\n\nprocessor : 1\nmicrocode : 0xde\n");
    ASSERT_EQ(1u, sockets.size());
    EXPECT_EQ("0", sockets[0].socket);
    EXPECT_EQ("0xde", sockets[0].revision);
}

}  // namespace
}  // namespace svm

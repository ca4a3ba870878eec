#include "PciInventory.h"

#include <gtest/gtest.h>

#include "ModuleTestSupport.h"
#include "svm/PciIdDatabase.h"

using svmtest::FakeRoot;
using svmtest::Select;

namespace svm {
namespace {

const char* const kPciIds =
    "# comment\n"
    "1af4  Red Hat, Inc.\n"
    "\t1041  Virtio 1.0 network device\n"
    "\t\t1af4 1100  QEMU Virtual Machine\n"
    "\t1042  Virtio 1.0 block device\n"
    "8086  Intel Corporation\n"
    "\t1572  Ethernet Controller X710 for 10GbE SFP+\n"
    "\n"
    "C 01  Mass storage controller\n"
    "\t08  Non-Volatile memory controller\n"
    "\t\t02  NVM Express\n"
    "C 06  Bridge\n"
    "\t00  Host bridge\n";

std::string Collect(const FakeRoot& root) {
    SvmDocument doc;
    ModuleOptions options;
    options.root = root.Path();
    CollectPciInventory(options, doc);
    return doc.ToString();
}

class PciInventoryTest : public ::testing::Test {
  protected:
    void SetUp() override {
        root.Write("/proc/sys/kernel/osrelease", "6.1.0-test\n");
        root.Write("/usr/share/misc/pci.ids", kPciIds);
        root.AddPciFunction("0000:00:00.0", "0x8086", "0x0d57", "0x0000", "0x0000", "0x060000");
        root.AddPciFunction("0000:3b:00.1", "0x8086", "0x1572", "0x1028", "0x1f99", "0x020000");
        root.AddPciFunction("0000:00:03.0", "0x1af4", "0x1041", "0x1af4", "0x1100", "0x020000");
        root.BindDriver("0000:3b:00.1", "i40e", "i40e");
        root.Write("/sys/module/i40e/version", "2.22.18\n");
        root.BindDriver("0000:00:03.0", "virtio-pci", "");
    }
    FakeRoot root;
};

TEST_F(PciInventoryTest, ListsEveryFunctionWithIdsAndAddress) {
    std::string xml = Collect(root);
    auto devices = Select(xml, "/SVMInventory/Device");
    ASSERT_EQ(3u, devices.size()) << xml;
    // Sorted by address.
    EXPECT_EQ("0000:00:00.0", devices[0]["enum"]);
    EXPECT_EQ("0000:00:03.0", devices[1]["enum"]);
    EXPECT_EQ("0000:3b:00.1", devices[2]["enum"]);
    EXPECT_EQ("8086", devices[2]["vendorID"]);
    EXPECT_EQ("1572", devices[2]["deviceID"]);
    EXPECT_EQ("1028", devices[2]["subVendorID"]);
    EXPECT_EQ("1f99", devices[2]["subDeviceID"]);
    EXPECT_EQ("3b", devices[2]["bus"]);
    EXPECT_EQ("0", devices[2]["device"]);
    EXPECT_EQ("1", devices[2]["function"]);
    EXPECT_EQ(0u, Select(xml, "//SPStatus").size());
}

TEST_F(PciInventoryTest, DisplayNameComesFromTheIdDatabaseElseTheClass) {
    std::string xml = Collect(root);
    auto devices = Select(xml, "/SVMInventory/Device");
    ASSERT_EQ(3u, devices.size());
    EXPECT_EQ("Host bridge", devices[0]["display"]);  // 8086:0d57 is not in the database
    EXPECT_EQ("Red Hat, Inc. Virtio 1.0 network device", devices[1]["display"]);
    EXPECT_EQ("Intel Corporation Ethernet Controller X710 for 10GbE SFP+", devices[2]["display"]);
}

TEST_F(PciInventoryTest, WithoutTheDatabaseTheBuiltInClassNamesAnswer) {
    FakeRoot bare;
    bare.AddPciFunction("0000:00:1f.2", "0x8086", "0xa102", "0x1028", "0x07a1", "0x010601");
    auto devices = Select(Collect(bare), "/SVMInventory/Device");
    ASSERT_EQ(1u, devices.size());
    EXPECT_EQ("SATA controller", devices[0]["display"]);
}

TEST_F(PciInventoryTest, DriverVersionFromModuleElseKernelRelease) {
    std::string xml = Collect(root);
    auto apps = Select(xml, "/SVMInventory/Device[@enum='0000:3b:00.1']/Application");
    ASSERT_EQ(1u, apps.size());
    EXPECT_EQ("DRVR", apps[0]["componentType"]);
    EXPECT_EQ("2.22.18", apps[0]["version"]);
    EXPECT_EQ("i40e", apps[0]["display"]);
    apps = Select(xml, "/SVMInventory/Device[@enum='0000:00:03.0']/Application");
    ASSERT_EQ(1u, apps.size());
    EXPECT_EQ("6.1.0-test", apps[0]["version"]);  // built-in driver
    EXPECT_EQ("virtio-pci", apps[0]["display"]);
}

TEST_F(PciInventoryTest, UnboundFunctionIsListedWithoutApplication) {
    auto apps = Select(Collect(root), "/SVMInventory/Device[@enum='0000:00:00.0']/Application");
    EXPECT_EQ(0u, apps.size());
}

TEST_F(PciInventoryTest, OutOfTreeModuleWithoutVersionGetsNoApplication) {
    root.AddPciFunction("0000:af:00.0", "0x15b3", "0x1017", "0x15b3", "0x0020", "0x020000");
    root.BindDriver("0000:af:00.0", "vendor_drv", "vendor_drv");
    root.Write("/sys/module/vendor_drv/taint", "OE\n");
    auto apps = Select(Collect(root), "/SVMInventory/Device[@enum='0000:af:00.0']/Application");
    EXPECT_EQ(0u, apps.size());
}

TEST(PciInventoryFailureTest, MissingPciTreeIsReportedAsFailure) {
    FakeRoot empty;
    std::string xml = Collect(empty);
    EXPECT_EQ(0u, Select(xml, "//Device").size());
    auto status = Select(xml, "/SVMInventory/SPStatus[@result='false']/Message");
    ASSERT_EQ(1u, status.size());
    EXPECT_NE(std::string::npos, status[0]["#text"].find("/sys/bus/pci/devices")) << status[0]["#text"];
}

TEST(PciInventoryFailureTest, UnreadableFunctionIsReportedAndOthersKept) {
    FakeRoot root;
    root.AddPciFunction("0000:00:01.0", "0x1af4", "0x1045", "0x1af4", "0x1045", "0xffff00");
    root.MakeDir("/sys/bus/pci/devices/0000:00:02.0");  // no id files
    std::string xml = Collect(root);
    EXPECT_EQ(1u, Select(xml, "//Device").size());
    auto status = Select(xml, "//SPStatus/Message");
    ASSERT_EQ(1u, status.size());
    EXPECT_NE(std::string::npos, status[0]["#text"].find("0000:00:02.0/vendor"));
}

TEST(PciIdDatabaseTest, KeepsOnlyWantedNamesAndResolvesClasses) {
    FakeRoot root;
    root.Write("/usr/share/hwdata/pci.ids", kPciIds);
    PciIdDatabase ids;
    ids.Want(0x1af4, 0x1042, 0x010802);
    ASSERT_TRUE(ids.Load(Sysfs(root.Path())));
    EXPECT_EQ("Red Hat, Inc.", ids.VendorName(0x1af4));
    EXPECT_EQ("Virtio 1.0 block device", ids.DeviceName(0x1af4, 0x1042));
    EXPECT_EQ("", ids.DeviceName(0x1af4, 0x1041));  // not asked for
    EXPECT_EQ("", ids.VendorName(0x8086));
    EXPECT_EQ("Non-Volatile memory controller", ids.ClassName(0x010802));
    EXPECT_EQ("PCI device 1234:5678", ids.DisplayName(0x1234, 0x5678, 0x770000));
}

TEST(PciIdDatabaseTest, MissingDatabaseIsNotFatal) {
    FakeRoot root;
    PciIdDatabase ids;
    ids.Want(0x8086, 0x1572, 0x020000);
    EXPECT_FALSE(ids.Load(Sysfs(root.Path())));
    EXPECT_EQ("Ethernet controller", ids.DisplayName(0x8086, 0x1572, 0x020000));
}

struct AddressCase {
    std::string text;
    bool ok;
    unsigned domain, bus, device, function;
};

class PciAddressTest : public ::testing::TestWithParam<AddressCase> {};

TEST_P(PciAddressTest, Parses) {
    PciFunction fn;
    const AddressCase& c = GetParam();
    ASSERT_EQ(c.ok, ParsePciAddress(c.text, fn)) << c.text;
    if (!c.ok) return;
    EXPECT_EQ(c.domain, fn.domain);
    EXPECT_EQ(c.bus, fn.bus);
    EXPECT_EQ(c.device, fn.device);
    EXPECT_EQ(c.function, fn.function);
}

INSTANTIATE_TEST_SUITE_P(Table, PciAddressTest,
                         ::testing::Values(AddressCase{"0000:3b:00.1", true, 0, 0x3b, 0, 1},
                                           AddressCase{"10000:ff:1f.7", true, 0x10000, 0xff, 0x1f, 7},
                                           AddressCase{"3b:00.1", true, 0, 0x3b, 0, 1},
                                           AddressCase{"0000:3b:20.0", false, 0, 0, 0, 0},
                                           AddressCase{"0000:3b:00.8", false, 0, 0, 0, 0},
                                           AddressCase{"virtio1", false, 0, 0, 0, 0},
                                           AddressCase{"0:0:0:0", false, 0, 0, 0, 0},
                                           AddressCase{"", false, 0, 0, 0, 0}));

}  // namespace
}  // namespace svm

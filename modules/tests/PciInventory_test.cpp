#include "PciInventory.h"

#include <gtest/gtest.h>

#include "ModuleTestSupport.h"
#include "svm/PciIdDatabase.h"

using svmtest::Attributes;
using svmtest::Collect;
using svmtest::Failures;
using svmtest::FakeRoot;
using svmtest::Select;

namespace svm {
namespace {

const char* const kPciIds =
    "# comment\n1af4  Red Hat, Inc.\n\t1041  Virtio 1.0 network device\n\t\t1af4 1100  QEMU\n"
    "\t1042  Virtio 1.0 block device\n8086  Intel Corporation\n\t1572  Ethernet Controller X710\n\n"
    "C 01  Mass storage controller\n\t08  Non-Volatile memory controller\n\t\t02  NVM Express\n"
    "C 06  Bridge\n\t00  Host bridge\n";

TEST(PciInventoryTest, ListsEveryFunctionWithIdsNamesAndDrivers) {
    FakeRoot root;
    root.Write("/proc/sys/kernel/osrelease", "6.1.0-test\n");
    root.Write("/usr/share/misc/pci.ids", kPciIds);
    root.AddPciFunction("0000:00:00.0", "0x8086", "0x0d57", "0x0000", "0x0000", "0x060000");
    root.AddPciFunction("0000:3b:00.1", "0x8086", "0x1572", "0x1028", "0x1f99", "0x020000");
    root.AddPciFunction("0000:00:03.0", "0x1af4", "0x1041", "0x1af4", "0x1100", "0x020000");
    root.AddPciFunction("0000:af:00.0", "0x15b3", "0x1017", "0x15b3", "0x0020", "0x020000");
    root.BindDriver("0000:3b:00.1", "i40e", "i40e");
    root.Write("/sys/module/i40e/version", "2.22.18\n");
    root.BindDriver("0000:00:03.0", "virtio-pci", "");
    root.BindDriver("0000:af:00.0", "oot_drv", "oot_drv");
    root.Write("/sys/module/oot_drv/taint", "OE\n");  // out of tree, without a version
    const std::string xml = Collect(CollectPciInventory, root);
    auto devices = Select(xml, "/SVMInventory/Device");
    ASSERT_EQ(4u, devices.size()) << xml;
    // Sorted by address; the name from the id database, else from the class.
    EXPECT_EQ("0000:00:00.0|Host bridge", devices[0]["enum"] + "|" + devices[0]["display"]);
    EXPECT_EQ("Red Hat, Inc. Virtio 1.0 network device", devices[1]["display"]);
    const Attributes& x710 = devices[2];
    EXPECT_EQ("0000:3b:00.1 8086 1572 1028 1f99 3b 0 1 Intel Corporation Ethernet Controller X710",
              x710.at("enum") + " " + x710.at("vendorID") + " " + x710.at("deviceID") + " " +
                  x710.at("subVendorID") + " " + x710.at("subDeviceID") + " " + x710.at("bus") + " " +
                  x710.at("device") + " " + x710.at("function") + " " + x710.at("display"));
    auto app = [&](const std::string& address) {
        auto apps = Select(xml, "/SVMInventory/Device[@enum='" + address + "']/Application");
        return apps.empty() ? std::string("none")
                            : apps[0]["componentType"] + " " + apps[0]["display"] + " " + apps[0]["version"];
    };
    EXPECT_EQ("DRVR i40e 2.22.18", app("0000:3b:00.1"));
    EXPECT_EQ("DRVR virtio-pci 6.1.0-test", app("0000:00:03.0"));  // built in: the kernel release
    EXPECT_EQ("none", app("0000:00:00.0"));
    EXPECT_EQ("none", app("0000:af:00.0"));
    EXPECT_TRUE(Failures(xml).empty());
}

TEST(PciInventoryTest, FailuresAreReportedWithMessages) {
    FakeRoot empty;
    auto failures = Failures(Collect(CollectPciInventory, empty));
    ASSERT_EQ(1u, failures.size());
    EXPECT_NE(std::string::npos, failures[0].find("/sys/bus/pci/devices"));
    FakeRoot root;
    root.AddPciFunction("0000:00:1f.2", "0x8086", "0xa102", "0x1028", "0x07a1", "0x010601");
    root.MakeDir("/sys/bus/pci/devices/0000:00:02.0");  // no id files
    const std::string xml = Collect(CollectPciInventory, root);
    auto devices = Select(xml, "//Device");
    ASSERT_EQ(1u, devices.size());
    EXPECT_EQ("SATA controller", devices[0]["display"]);  // built-in class name without a database
    failures = Failures(xml);
    ASSERT_EQ(1u, failures.size());
    EXPECT_NE(std::string::npos, failures[0].find("0000:00:02.0/vendor"));
}

TEST(PciIdDatabaseTest, KeepsOnlyWantedNamesAndResolvesClasses) {
    FakeRoot root;
    root.Write("/usr/share/hwdata/pci.ids", kPciIds);
    PciIdDatabase ids;
    ids.Want(0x1af4, 0x1042, 0x010802);
    ASSERT_TRUE(ids.Load(Sysfs(root.Path())));
    EXPECT_EQ("Virtio 1.0 block device", ids.DeviceName(0x1af4, 0x1042));
    EXPECT_EQ("", ids.DeviceName(0x1af4, 0x1041));  // not asked for
    EXPECT_EQ("Non-Volatile memory controller", ids.ClassName(0x010802));
    EXPECT_EQ("PCI device 1234:5678", ids.DisplayName(0x1234, 0x5678, 0x770000));
}

TEST(PciAddressTest, Parses) {
    const std::pair<std::string, std::string> rows[] = {
        {"0000:3b:00.1", "0 3b 0 1"}, {"10000:ff:1f.7", "10000 ff 1f 7"},
        {"3b:00.1", "0 3b 0 1"},      {"0000:3b:20.0", "bad"},
        {"0000:3b:00.8", "bad"},      {"virtio1", "bad"},
        {"0:0:0:0", "bad"},           {"", "bad"}};
    for (const auto& row : rows) {
        PciFunction fn;
        char got[64] = "bad";
        if (ParsePciAddress(row.first, fn))
            snprintf(got, sizeof got, "%x %x %x %x", fn.domain, fn.bus, fn.device, fn.function);
        EXPECT_EQ(row.second, got) << row.first;
    }
}

}  // namespace
}  // namespace svm

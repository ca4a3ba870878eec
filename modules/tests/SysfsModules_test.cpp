// pciinv and nicinv over fake sysfs trees.
#include <cerrno>

#include "ModuleTestSupport.h"
#include "NicInventory.h"
#include "PciInventory.h"
#include "svm/PciIdDatabase.h"

using namespace svmtest;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using Strings = std::vector<std::string>;

namespace svm {
namespace {

TEST(PciInventoryTest, ListsEveryFunctionWithIdsNamesAndDriversOrAFailure) {
    FakeRoot root;
    EXPECT_THAT(Failures(Collect(CollectPciInventory, root)), ElementsAre(HasSubstr("/sys/bus/pci/devices")));
    root.Write("/proc/sys/kernel/osrelease", "6.1.0-test\n");
    root.Write(
        "/usr/share/misc/pci.ids",
        "# comment\n1af4  Red Hat, Inc.\n\t1041  Virtio 1.0 network device\n\t\t1af4 1100  QEMU\n"
        "8086  Intel Corporation\n\t1572  Ethernet Controller X710\n\nC 06  Bridge\n\t00  Host bridge\n");
    root.AddPci("0000:00:00.0", "8086 0d57 0000 0000 060000");
    root.AddPci("0000:3b:00.1", "8086 1572 1028 1f99 020000", "i40e");
    root.Write("/sys/module/i40e/version", "2.22.18\n");
    root.AddPci("0000:00:03.0", "1af4 1041 1af4 1100 020000", "virtio-pci", true);
    root.AddPci("0000:af:00.0", "15b3 1017 15b3 0020 020000", "oot_drv");
    root.Write("/sys/module/oot_drv/taint", "OE\n");   // out of tree, without a version
    root.Write("/sys/bus/pci/devices/0000:00:02.0/");  // no id files: a failure, the others listed
    const std::string xml = Collect(CollectPciInventory, root);
    // Sorted by address; the name from the id database, else from the class (built in for a
    // class the database lacks); a built-in driver has the kernel release.
    const char* const expected[][3] = {
        {"0000:00:00.0", "Host bridge", ""},
        {"0000:00:03.0", "Red Hat, Inc. Virtio 1.0 network device", "DRVR virtio-pci 6.1.0-test"},
        {"0000:3b:00.1", "Intel Corporation Ethernet Controller X710", "DRVR i40e 2.22.18"},
        {"0000:af:00.0", "Ethernet controller", ""}};
    auto devices = Select(xml, "/SVMInventory/Device");
    ASSERT_EQ(4u, devices.size()) << xml;
    for (int i = 0; i < 4; ++i) {
        EXPECT_EQ(expected[i][0], devices[i]["enum"]);
        EXPECT_EQ(expected[i][1], devices[i]["display"]);
        std::string app;
        for (auto& a : Select(xml, std::string("//Device[@enum='") + expected[i][0] + "']/Application"))
            app = a["componentType"] + " " + a["display"] + " " + a["version"];
        EXPECT_EQ(expected[i][2], app) << expected[i][0];
    }
    std::string ids;
    for (const char* a : {"vendorID", "deviceID", "subVendorID", "subDeviceID", "bus", "device", "function"})
        ids += devices[2][a] + " ";
    EXPECT_EQ("8086 1572 1028 1f99 3b 0 1 ", ids);
    EXPECT_THAT(Failures(xml), ElementsAre(HasSubstr("0000:00:02.0/vendor")));
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

// Answers ETHTOOL_GDRVINFO from a table, or fails with the interface's error.
struct FakeEthtool : IEthtool {
    std::map<std::string, EthtoolDrvInfo> answers;
    std::map<std::string, int> failures;
    Strings asked;
    int GetDrvInfo(const std::string& ifname, EthtoolDrvInfo& info, std::string& error) override {
        asked.push_back(ifname);
        error = "ETHTOOL_GDRVINFO on " + ifname + ": fake failure";
        info = answers[ifname];
        return failures[ifname];
    }
};

TEST(NicInventoryTest, FirmwareGoesOnThePciFunctionOfItsBusAddressOnceOrAFailure) {
    FakeRoot root;
    FakeEthtool ethtool;
    auto interface = [&](const char* name, const std::string& device, const char* bus,
                         const char* firmware = "222.0.144.0/pkg 22.21.06.80") {
        root.Write("/sys/devices/" + device + "/");
        root.Link("../../../devices/" + device, std::string("/sys/class/net/") + name + "/device");
        ethtool.answers[name] = {"bnxt_en", "6.1.0", firmware, bus};
    };
    root.AddPci("0000:3b:00.0", "14e4 16d7 14e4 4140 020000");
    root.AddPci("0000:3b:00.1", "14e4 16d7 14e4 4140 020000");
    root.Link("../../devices/virtual/net/lo", "/sys/class/net/lo");
    interface("eno1", "pci0000:00/0000:3b:00.0", "0000:3b:00.0");
    interface("eno1d1", "pci0000:00/0000:3b:00.0", "0000:3b:00.0");  // shares eno1's function
    interface("eno2", "pci0000:00/0000:3b:00.1", "0000:3b:00.1", "N/A");
    interface("eno3", "pci0000:00/0000:5e:00.0", "0000:5e:00.0");
    interface("eno4", "pci0000:00/0000:3b:00.1", "0000:3b:00.1", "n/a");
    interface("usb0", "usb1/1-1", "");  // no bus address
    interface("usb1", "usb1/1-2", "usb-0000:00:14.0-1", "rtl8153a-4");
    // Without ethtool support, or gone meanwhile: nothing to tell; any other error is a failure.
    ethtool.failures = {{"eno5", EOPNOTSUPP}, {"eno6", ENODEV}, {"eno7", EPERM}};
    for (const char* name : {"eno5", "eno6", "eno7"})
        interface(name, "pci0000:00/0000:3b:00.1", "0000:3b:00.1");
    const std::string xml = Collect(CollectNicInventory, root, ethtool);
    auto devices = Select(xml, "/SVMInventory/Device");
    ASSERT_EQ(3u, devices.size()) << xml;  // off the PCI tree: a non-PCI device
    EXPECT_EQ("14e4 16d7 4140 3b 0|NIC.0000:5e:00.0|NIC.usb-0000:00:14.0-1",
              devices[0]["vendorID"] + " " + devices[0]["deviceID"] + " " + devices[0]["subDeviceID"] + " " +
                  devices[0]["bus"] + " " + devices[0]["function"] + "|" + devices[1]["FQDD"] + "|" +
                  devices[2]["FQDD"]);
    auto apps = Select(xml, "/SVMInventory/Device/Application");
    EXPECT_EQ("FRMW 222.0.144.0/pkg 22.21.06.80", apps[0]["componentType"] + " " + apps[0]["version"]);
    EXPECT_EQ((Strings{"eno1", "eno1d1", "eno2", "eno3", "eno4", "eno5", "eno6", "eno7", "usb0", "usb1"}),
              ethtool.asked);  // never lo
    EXPECT_THAT(Failures(xml), ElementsAre(HasSubstr("eno7")));
    FakeRoot empty;
    EXPECT_THAT(Failures(Collect(CollectNicInventory, empty, ethtool)),
                ElementsAre(HasSubstr("/sys/class/net")));
}

}  // namespace
}  // namespace svm

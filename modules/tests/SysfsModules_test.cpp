// pciinv, nicinv and storageinv over fake sysfs trees.
#include <cerrno>
#include <sstream>

#include "ModuleTestSupport.h"
#include "NicInventory.h"
#include "PciInventory.h"
#include "StorageInventory.h"
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

// Answers the firmware slot log of the controllers it has a page for, by device path; the
// others fail with their error, ENOENT (no device node) by default.
struct FakeNvmeAdmin : INvmeAdmin {
    std::map<std::string, std::vector<uint8_t>> pages;
    std::map<std::string, int> failures;
    int GetLogPage(const std::string& device, uint8_t logId, size_t size, std::vector<uint8_t>& page,
                   std::string& error) override {
        error = "ioctl on " + device + ": fake failure";
        if (logId != 0x03 || size != 512) return EINVAL;
        if (!pages.count(device)) return failures.count(device) ? failures[device] : ENOENT;
        page = pages[device];
        return 0;
    }
};

// A firmware slot information page: AFI byte, then the revisions of slots 1 to 7.
std::vector<uint8_t> SlotLog(uint8_t afi, std::vector<std::string> slots) {
    std::vector<uint8_t> page(512, 0);
    page[0] = afi;
    for (size_t i = 0; i < slots.size(); ++i) {
        slots[i].resize(8, ' ');
        std::copy(slots[i].begin(), slots[i].end(), page.begin() + 8 + 8 * i);
    }
    return page;
}

class StorageInventoryTest : public ::testing::Test {
protected:
    void SetUp() override {
        const std::string nvme = "/sys/devices/pci0000:00/0000:01:00.0/nvme/nvme0";
        root.Write(nvme + "/model", "Fast NVMe 1TB          \n");
        root.Write(nvme + "/firmware_rev", "2B2QEXM7\n");
        root.Write(nvme + "/address", "0000:01:00.0\n");
        root.Link("../.." + nvme.substr(4), "/sys/class/nvme/nvme0");
        Disk(nvme + "/nvme0n1", "../../nvme0", "nvme0n1");
        const std::string sata = "/sys/devices/pci0000:00/0000:00:17.0/ata3/host2/target2:0:0/2:0:0:0";
        Scsi(sata, "ATA", "SSD <Pro> & Co", "DL43", "sda");
        root.Write(sata + "/block/sda/sda1/partition", "1\n");
        root.Link("../.." + sata.substr(4) + "/block/sda/sda1", "/sys/class/block/sda1");
        Scsi(
            "/sys/devices/pci0000:3a/0000:3a:00.0/0000:3b:00.0/host0/port-0:0/end_device-0:0/target0:0:0/"
            "0:0:0:0",
            "SEAGATE", "ST1200MM0099", "ST31", "sdb");
        Disk("/sys/devices/pci0000:00/0000:00:02.0/virtio1/block/vda", "../../../virtio1", "vda");
    }
    // A block device at path with its device link and its class link.
    void Disk(const std::string& path, const std::string& device, const std::string& name) {
        root.Link(device, path + "/device");
        root.Link("../.." + path.substr(4), "/sys/class/block/" + name);
    }
    void Scsi(const std::string& path, const std::string& vendor, const std::string& model,
              const std::string& rev, const std::string& name) {
        for (auto [file, value] : {std::pair{"/vendor", vendor}, {"/model", model}, {"/rev", rev}})
            root.Write(path + file, value + "   \n");
        Disk(path + "/block/" + name, "../../../" + path.substr(path.rfind('/') + 1), name);
    }
    std::string Run() { return Collect(CollectStorageInventory, root, admin, log); }
    FakeRoot root;
    FakeNvmeAdmin admin;
    std::ostringstream log;
};

TEST_F(StorageInventoryTest, ReportsNvmeAndScsiFirmwareAsNonPciDevicesOrAFailure) {
    std::string xml = Run();
    const char* const expected[][3] = {
        {"NVMe.0000:01:00.0", "Fast NVMe 1TB", "2B2QEXM7"},
        {"Disk.0000:00:17.0.ata-3", "SSD <Pro> & Co", "DL43"},  // "ATA" left out
        {"Disk.0000:3b:00.0.scsi-0:0:0:0", "SEAGATE ST1200MM0099", "ST31"}};
    auto devices = Select(xml, "/SVMInventory/Device");
    auto apps = Select(xml, "/SVMInventory/Device/Application[@componentType='FRMW']");
    ASSERT_EQ(3u, devices.size()) << xml;
    ASSERT_EQ(3u, apps.size());
    for (int i = 0; i < 3; ++i) {
        EXPECT_EQ(expected[i][0], devices[i]["FQDD"]);
        EXPECT_EQ(expected[i][1], devices[i]["display"]);
        EXPECT_EQ("", devices[i]["componentID"]);
        EXPECT_EQ(expected[i][2], apps[i]["version"]);
    }
    EXPECT_THAT(Failures(xml), ElementsAre());
    std::filesystem::remove(root.path + "/sys/devices/pci0000:00/0000:01:00.0/nvme/nvme0/firmware_rev");
    xml = Run();
    EXPECT_EQ(2u, Select(xml, "//Device").size());
    EXPECT_THAT(Failures(xml), ElementsAre(HasSubstr("firmware_rev")));
    FakeRoot empty;
    EXPECT_THAT(Failures(Collect(CollectStorageInventory, empty, admin, log)),
                ElementsAre(HasSubstr("/sys/class/block")));
}

TEST_F(StorageInventoryTest, NvmeFirmwareIsTheActiveSlotsRevisionElseSysfsWithTheSourceLogged) {
    const std::string nvme = "/sys/devices/pci0000:00/0000:02:00.0/nvme/nvme1";
    root.Write(nvme + "/model", "Second NVMe\n");
    root.Write(nvme + "/firmware_rev", "OLD1\n");
    root.Write(nvme + "/address", "0000:02:00.0\n");
    root.Link("../.." + nvme.substr(4), "/sys/class/nvme/nvme1");
    // nvme0 was updated from slot 1 to slot 2 and not yet reset: sysfs still shows the old revision.
    admin.pages[root.path + "/dev/nvme0"] = SlotLog(0x02, {"2B2QEXM7", "3B2QEXM7"});
    const struct {
        const char* name;
        std::vector<uint8_t> page;  // of nvme1
        int failure;                // of nvme1's ioctl
        const char* version;
        const char* logged;
    } rows[] = {
        {"slot 1, blank padded", SlotLog(0x01, {"1.0"}), 0, "1.0", "the firmware slot log, active slot 1"},
        {"slot 7", SlotLog(0x07, {"a", "b", "c", "d", "e", "f", "GDC5602Q"}), 0, "GDC5602Q",
         "the firmware slot log, active slot 7"},
        {"next reset bits ignored", SlotLog(0x31, {"NEW", "", "PENDING"}), 0, "NEW",
         "the firmware slot log, active slot 1"},
        {"no active slot", SlotLog(0x00, {"1.0"}), 0, "OLD1",
         "sysfs firmware_rev (firmware slot log names no active"},
        {"blank active slot", SlotLog(0x02, {"1.0", "    "}), 0, "OLD1",
         "sysfs firmware_rev (active slot 2 has no"},
        {"short page", std::vector<uint8_t>(16, 1), 0, "OLD1",
         "sysfs firmware_rev (firmware slot log of 16 bytes"},
        {"control and invalid bytes", SlotLog(0x01, {std::string("1.\x01\xff\x80") + "Z"}), 0, "1. ??Z",
         "the firmware slot log, active slot 1"},
        {"no permission", {}, EACCES, "OLD1", "sysfs firmware_rev (ioctl on "},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        const std::string nvme1 = root.path + "/dev/nvme1";  // its own device below the root
        admin.pages.erase(nvme1);
        if (!row.failure) admin.pages[nvme1] = row.page;
        admin.failures[nvme1] = row.failure;
        log.str("");
        const std::string xml = Run();
        EXPECT_THAT(Failures(xml), ElementsAre());
        EXPECT_EQ(Select(xml, "//Device[@FQDD='NVMe.0000:01:00.0']/Application")[0]["version"], "3B2QEXM7");
        auto apps = Select(xml, "//Device[@FQDD='NVMe.0000:02:00.0']/Application");
        ASSERT_EQ(apps.size(), 1u) << xml;
        EXPECT_EQ(apps[0]["version"], row.version);
        EXPECT_THAT(log.str(), HasSubstr("storageinv: nvme0: firmware 3B2QEXM7 from the firmware slot log"));
        EXPECT_THAT(log.str(),
                    HasSubstr(std::string("nvme1: firmware ") + row.version + " from " + row.logged));
    }
}

TEST(DiskFqddTest, Builds) {
    const std::pair<const char*, const char*> rows[] = {
        {"pci0000:00/0000:00:1c.0/0000:02:00.0/host4/target4:2:1/4:2:1:0", "Disk.0000:02:00.0.scsi-4:2:1:0"},
        {"platform/host3/target3:0:0/3:0:0:0", "Disk.scsi-3:0:0:0"},
        {"pci0000:00/0000:00:14.0/usb2/2-1/2-1:1.0/host6/target6:0:0/6:0:0:0",
         "Disk.0000:00:14.0.scsi-6:0:0:0"}};
    for (const auto& row : rows) EXPECT_EQ(row.second, DiskFqdd(std::string("/sys/devices/") + row.first));
}

}  // namespace
}  // namespace svm

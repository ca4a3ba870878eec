// storageinv over fake sysfs trees: NVMe controllers, SCSI disks, RAID logical volumes and
// megaraid_sas controllers, with fake admin commands and a fake MFI management device.
#include <cerrno>
#include <cstring>
#include <sstream>

#include "MfiControllerInfo.h"
#include "ModuleTestSupport.h"
#include "NvmeFirmwareLog.h"
#include "StorageInventory.h"

using namespace svmtest;
using ::testing::AllOf;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::Not;
using Bytes = std::vector<uint8_t>;

namespace svm {
namespace {

// Answers Identify Controller and the firmware slot log of the controllers it has pages for, by
// device path; the others fail with their error, ENOENT (no device node) by default.
struct FakeNvmeAdmin : INvmeAdmin {
    std::map<std::string, Bytes> identify, slotLogs;
    std::map<std::string, int> failures;
    std::vector<std::string> sent;  // "device opcode timeout"
    int Send(const std::string& device, const NvmeAdminCommand& command, unsigned timeoutMs, Bytes& data,
             std::string& error) override {
        sent.push_back(device.substr(device.rfind('/') + 1) + " " + std::to_string(command.opcode) + " " +
                       std::to_string(timeoutMs));
        error = "ioctl on " + device + ": fake failure";
        auto& pages = command.opcode == 0x06 ? identify : slotLogs;
        if (!pages.count(device)) return failures[device] ? failures[device] : ENOENT;
        data = pages[device];
        return 0;
    }
};

// Identify Controller data with the firmware revision (FR) at bytes 64 to 71.
Bytes IdentifyData(std::string revision) {
    Bytes data(4096, 0);
    revision.resize(8, ' ');
    std::copy(revision.begin(), revision.end(), data.begin() + 64);
    const std::string model = "Fast NVMe 1TB";
    std::copy(model.begin(), model.end(), data.begin() + 24);
    return data;
}

// A firmware slot information page: AFI byte, then the revisions of slots 1 to 7.
Bytes SlotLog(uint8_t afi, std::vector<std::string> slots) {
    Bytes page(512, 0);
    page[0] = afi;
    for (size_t i = 0; i < slots.size(); ++i) {
        slots[i].resize(8, ' ');
        std::copy(slots[i].begin(), slots[i].end(), page.begin() + 8 + 8 * i);
    }
    return page;
}

// struct megasas_ctrl_info as a controller answers it: product name, package version and the
// image components in flash and pending, at the driver's offsets, little-endian.
Bytes CtrlInfo(const std::string& product, const std::string& package,
               const std::vector<std::pair<std::string, std::string>>& images,
               const std::vector<std::pair<std::string, std::string>>& pending = {}) {
    Bytes data(2048, 0);
    auto put = [&](size_t at, const std::string& text) {
        std::copy(text.begin(), text.end(), data.begin() + at);
    };
    data[0] = 0x00, data[1] = 0x10, data[2] = 0x5d, data[3] = 0x00;  // vendor 0x1000, device 0x005d
    data[180] = static_cast<uint8_t>(images.size());
    for (size_t i = 0; i < images.size(); ++i) {
        put(184 + 72 * i, images[i].first);
        put(184 + 72 * i + 8, images[i].second);
        put(184 + 72 * i + 40, "Jan 19 2019");
    }
    data[760] = static_cast<uint8_t>(pending.size());
    for (size_t i = 0; i < pending.size(); ++i) {
        put(764 + 72 * i, pending[i].first);
        put(764 + 72 * i + 8, pending[i].second);
    }
    put(1344, product);
    put(1424, "5CF01GP");
    put(1600, package);
    return data;
}

const Bytes kPerc = CtrlInfo("PERC H730P Mini", "25.5.9.0001",
                             {{"APP ", "4.300.00-8366"}, {"BIOS", "6.30.04.0_4.17.08.00_0x06120304"}});

// Answers MR_DCMD_CTRL_GET_INFO for each host number from a table; records what it was asked.
struct FakeMfi : IMfiDevice {
    struct Answer {
        int rc = 0;
        uint8_t status = 0;
        Bytes data;
    };
    std::map<unsigned, Answer> answers;
    int mknodFailure = 0;
    std::vector<std::string> calls;
    int Dcmd(const std::string& node, unsigned hostNo, uint32_t opcode, uint32_t size, unsigned timeoutMs,
             Bytes& data, uint8_t& status, std::string& error) override {
        char call[160];
        std::snprintf(call, sizeof call, "dcmd %s host%u 0x%08x %u %u", node.c_str(), hostNo,
                      static_cast<unsigned>(opcode), static_cast<unsigned>(size), timeoutMs);
        calls.push_back(call);
        const Answer& answer = answers[hostNo];
        error =
            answer.rc == EACCES ? "open " + node + ": " + std::strerror(EACCES) : std::strerror(answer.rc);
        if (answer.rc == 0) data = answer.data, status = answer.status;
        return answer.rc;
    }
    int MakeNode(unsigned major, std::string& path, std::string& error) override {
        calls.push_back("mknod " + std::to_string(major));
        path = "/private/megaraid_sas_ioctl_node";
        error = "mknod " + path + ": " + std::strerror(mknodFailure);
        return mknodFailure;
    }
    void RemoveNode(const std::string& path) override { calls.push_back("remove " + path); }
};

class StorageInventoryTest : public ::testing::Test {
protected:
    void SetUp() override {
        Nvme("nvme0", "0000:01:00.0", "2B2QEXM7");
        Disk("/sys/devices/pci0000:00/0000:01:00.0/nvme/nvme0/nvme0n1", "../../nvme0", "nvme0n1");
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
    // A live PCIe NVMe controller whose sysfs firmware_rev is rev.
    void Nvme(const std::string& name, const std::string& address, const std::string& rev) {
        const std::string dir = "/sys/devices/pci0000:00/" + address + "/nvme/" + name;
        root.Write(dir + "/model", "Fast NVMe 1TB          \n");
        root.Write(dir + "/firmware_rev", rev + "\n");
        root.Write(dir + "/address", address + "\n");
        root.Write(dir + "/transport", "pcie\n");
        root.Write(dir + "/state", "live\n");
        root.Link("../.." + dir.substr(4), "/sys/class/nvme/" + name);
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
    // SCSI host number host of driver on the PCI function at address.
    void Host(unsigned host, const std::string& driver, const std::string& address) {
        const std::string name = "host" + std::to_string(host);
        const std::string dir = "/sys/devices/pci0000:00/" + address + "/" + name;
        root.Write(dir + "/scsi_host/" + name + "/proc_name", driver + "\n");
        root.Link("../../../" + name, dir + "/scsi_host/" + name + "/device");
        root.Link("../.." + dir.substr(4) + "/scsi_host/" + name, "/sys/class/scsi_host/" + name);
    }
    std::string Run() { return Collect(CollectStorageInventory, root, admin, mfi, log); }
    FakeRoot root;
    FakeNvmeAdmin admin;
    FakeMfi mfi;
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
    EXPECT_THAT(Failures(Collect(CollectStorageInventory, empty, admin, mfi, log)),
                ElementsAre(HasSubstr("/sys/class/block")));
}

TEST(NvmeAdminCommandsTest, IdentifyControllerAndTheFirmwareSlotLog) {
    const NvmeAdminCommand identify = IdentifyControllerCommand(), slots = FirmwareSlotLogCommand();
    EXPECT_EQ(std::make_tuple(identify.opcode, identify.nsid, identify.cdw10, identify.size),
              std::make_tuple(uint8_t{0x06}, 0u, 0x01u, 4096u));
    // Log 0x03, 128 dwords less one in bits 27:16.
    EXPECT_EQ(std::make_tuple(slots.opcode, slots.nsid, slots.cdw10, slots.size),
              std::make_tuple(uint8_t{0x02}, 0xFFFFFFFFu, 0x007F0003u, 512u));
}

// The revision the controller runs is Identify Controller's FR (QEMU's slot log says "1.0" while
// the controller runs its own version); a staged update in the slot log is named in the display.
TEST_F(StorageInventoryTest, NvmeFirmwareIsIdentifyControllersRevisionElseSysfsWithTheSourceLogged) {
    Nvme("nvme1", "0000:02:00.0", "OLD1");
    const std::string nvme0 = root.path + "/dev/nvme0", nvme1 = root.path + "/dev/nvme1";
    // nvme0 has an update staged in slot 2, activated by the next reset.
    admin.identify[nvme0] = IdentifyData("2B2QEXM7");
    admin.slotLogs[nvme0] = SlotLog(0x21, {"2B2QEXM7", "3B2QEXM7"});
    const struct {
        const char* name;
        Bytes identify;  // of nvme1; empty: the ioctl fails with failure
        Bytes slotLog;
        int failure;
        const char* version;
        const char* display;
        const char* logged;
    } rows[] = {
        {"QEMU: slot log stub", IdentifyData("7.2.5"), SlotLog(0x01, {"1.0"}), 0, "7.2.5", "Fast NVMe 1TB",
         "nvme1: firmware 7.2.5 from Identify Controller\n"},
        {"staged in slot 3", IdentifyData("GDC5602Q"), SlotLog(0x31, {"a", "b", "GDC5702Q"}), 0, "GDC5602Q",
         "Fast NVMe 1TB; firmware GDC5702Q in slot 3 becomes active at the next reset",
         "nvme1: firmware GDC5602Q from Identify Controller; firmware GDC5702Q in slot 3"},
        {"next reset names the active slot", IdentifyData("NEW"), SlotLog(0x11, {"NEW"}), 0, "NEW",
         "Fast NVMe 1TB", "from Identify Controller\n"},
        {"no slot log",
         IdentifyData("NEW"),
         {},
         0,
         "NEW",
         "Fast NVMe 1TB",
         "from Identify Controller (ioctl on"},
        {"blank revision",
         IdentifyData("        "),
         {},
         0,
         "OLD1",
         "Fast NVMe 1TB",
         "sysfs firmware_rev (Identify Controller names no firmware revision"},
        {"short answer",
         Bytes(16, 1),
         {},
         0,
         "OLD1",
         "Fast NVMe 1TB",
         "sysfs firmware_rev (Identify Controller answer of 16 bytes"},
        {"control and invalid bytes",
         IdentifyData(std::string("1.\x01\xff\x80") + "Z"),
         {},
         0,
         "1. ??Z",
         "Fast NVMe 1TB",
         "from Identify Controller"},
        {"no permission", {}, {}, EACCES, "OLD1", "Fast NVMe 1TB", "sysfs firmware_rev (ioctl on "},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        admin.identify.erase(nvme1);
        admin.slotLogs.erase(nvme1);
        if (!row.failure) admin.identify[nvme1] = row.identify;
        if (!row.slotLog.empty()) admin.slotLogs[nvme1] = row.slotLog;
        admin.failures[nvme1] = row.failure;
        admin.sent.clear();
        log.str("");
        const std::string xml = Run();
        EXPECT_THAT(Failures(xml), ElementsAre());
        auto first = Select(xml, "//Device[@FQDD='NVMe.0000:01:00.0']/Application");
        ASSERT_EQ(first.size(), 1u) << xml;
        EXPECT_EQ(first[0]["version"], "2B2QEXM7");
        EXPECT_EQ(first[0]["display"],
                  "Fast NVMe 1TB; firmware 3B2QEXM7 in slot 2 becomes active at the next reset");
        auto apps = Select(xml, "//Device[@FQDD='NVMe.0000:02:00.0']/Application");
        ASSERT_EQ(apps.size(), 1u) << xml;
        EXPECT_EQ(apps[0]["version"], row.version);
        EXPECT_EQ(apps[0]["display"], row.display);
        EXPECT_THAT(log.str(),
                    HasSubstr("storageinv: nvme0: firmware 2B2QEXM7 from Identify Controller; firmware "
                              "3B2QEXM7 in slot 2 becomes active at the next reset\n"));
        EXPECT_THAT(log.str(), HasSubstr(row.logged));
        // Every admin command has a time limit of a few seconds, not the kernel's 60.
        for (const std::string& sent : admin.sent)
            EXPECT_THAT(sent, AllOf(HasSubstr(" 3000"), Not(HasSubstr(" 0"))));
    }
}

// Controllers that are not live, and fabrics controllers, get no admin command: their revision
// is sysfs firmware_rev. A controller that does not answer in time is also a failure.
TEST_F(StorageInventoryTest, NvmeAdminCommandsOnlyToLivePcieControllers) {
    const std::string dir = "/sys/devices/pci0000:00/0000:01:00.0/nvme/nvme0";
    const std::string device = root.path + "/dev/nvme0";
    const struct {
        const char* transport;
        const char* state;
        int failure;
        const char* logged;
        const char* error;
    } rows[] = {
        {"pcie\n", "resetting\n", 0, "from sysfs firmware_rev (state resetting)", nullptr},
        {"pcie\n", "dead\n", 0, "from sysfs firmware_rev (state dead)", nullptr},
        {"tcp\n", "live\n", 0, "from sysfs firmware_rev (transport tcp)", nullptr},
        {"rdma\n", "live\n", 0, "from sysfs firmware_rev (transport rdma)", nullptr},
        {nullptr, "live\n", 0, "from sysfs firmware_rev (no transport attribute)", nullptr},
        {"pcie\n", "live\n", ETIMEDOUT, "from sysfs firmware_rev (ioctl on", "nvme0: ioctl on"},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(std::string(row.transport ? row.transport : "none") + " " + row.state);
        std::filesystem::remove(root.path + dir + "/transport");
        if (row.transport) root.Write(dir + "/transport", row.transport);
        root.Write(dir + "/state", row.state);
        admin.identify.erase(device);
        admin.failures[device] = row.failure;
        if (!row.failure) admin.identify[device] = IdentifyData("FRESH");
        admin.sent.clear();
        log.str("");
        const std::string xml = Run();
        EXPECT_EQ(Select(xml, "//Device[@FQDD='NVMe.0000:01:00.0']/Application")[0]["version"], "2B2QEXM7");
        EXPECT_THAT(log.str(), HasSubstr(std::string("nvme0: firmware 2B2QEXM7 ") + row.logged));
        if (row.error) {
            EXPECT_THAT(Failures(xml), ElementsAre(HasSubstr(row.error)));
            EXPECT_EQ(admin.sent, (std::vector<std::string>{"nvme0 6 3000"}));
        } else {
            EXPECT_THAT(Failures(xml), ElementsAre());
            EXPECT_EQ(admin.sent, std::vector<std::string>());
        }
    }
}

// A volume that a RAID controller exposes carries the controller's firmware as its revision:
// it is left out; physical disks the driver passes through stay.
TEST_F(StorageInventoryTest, RaidLogicalVolumesAreNotDisks) {
    const struct {
        const char* driver;
        const char* hctl;
        const char* raidLevel;  // the scsi_device attribute, when the driver has one
        bool disk;
    } rows[] = {
        {"megaraid_sas", "4:2:0:0", nullptr, false},  // a virtual drive (QEMU's too)
        {"megaraid_sas", "4:3:1:0", nullptr, false},
        {"megaraid_sas", "4:0:5:0", nullptr, true},  // JBOD
        {"megaraid_sas", "4:1:2:0", nullptr, true},
        {"hpsa", "4:1:0:0", "RAID 1(+0)\n", false},
        {"hpsa", "4:0:3:0", "N/A\n", true},  // HBA mode
        {"smartpqi", "4:0:0:0", "RAID 5\n", false},
        {"smartpqi", "4:2:1:0", "N/A\n", true},
        {"aacraid", "4:0:0:0", nullptr, false},  // a container
        {"aacraid", "4:1:2:0", nullptr, true},
        {"mpt3sas", "4:1:0:0", nullptr, false},  // integrated RAID
        {"mpt3sas", "4:0:7:0", nullptr, true},
        {"mpt3sas", "4:2:0:0", nullptr, true},  // an NVMe drive behind the controller
        {"mptsas", "4:1:0:0", nullptr, false},
        {"mptsas", "4:0:1:0", nullptr, true},
        {"myrs", "4:1:0:0", "Physical Drive\n", true},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(std::string(row.driver) + " " + row.hctl);
        FakeRoot fresh;
        std::swap(root.path, fresh.path);
        root.AddPci("0000:af:00.0", "1000 005d 1028 1f47 010400", row.driver);
        Host(4, row.driver, "0000:af:00.0");
        const std::string hctl = row.hctl;
        const std::string path =
            "/sys/devices/pci0000:00/0000:af:00.0/host4/target4:" + hctl.substr(2, hctl.rfind(':') - 2) +
            "/" + hctl;
        Scsi(path, "DELL", "PERC H740P Mini", "5.16", "sdc");
        if (row.raidLevel) root.Write(path + "/raid_level", row.raidLevel);
        root.Write("/dev/megaraid_sas_ioctl_node");
        mfi.answers[4].data = kPerc;
        log.str("");
        const std::string xml = Run();
        std::swap(root.path, fresh.path);
        EXPECT_THAT(Failures(xml), ElementsAre());
        auto apps = Select(xml, "//Device[@FQDD='Disk.0000:af:00.0.scsi-" + hctl + "']/Application");
        EXPECT_EQ(apps.size(), row.disk ? 1u : 0u) << xml;
        if (row.disk)
            EXPECT_THAT(log.str(), Not(HasSubstr("logical volume")));
        else
            EXPECT_THAT(log.str(), HasSubstr("sdc: " + hctl + " is a logical volume (" + row.driver));
    }
}

// Two megaraid_sas controllers, hosts 0 and 5, on their PCI functions.
class MegaraidTest : public StorageInventoryTest {
protected:
    void SetUp() override {
        StorageInventoryTest::SetUp();
        root.AddPci("0000:18:00.0", "1000 005d 1028 1f47 010400", "megaraid_sas");
        root.AddPci("0000:5e:00.0", "1000 0016 1028 1fd3 010400", "megaraid_sas");
        root.Write("/usr/share/misc/pci.ids",
                   "1000  Broadcom / LSI\n\t005d  MegaRAID SAS-3 3108 [Invader]\n"
                   "\t0016  MegaRAID Tri-Mode SAS3508\n");
        Host(0, "megaraid_sas", "0000:18:00.0");
        Host(5, "megaraid_sas", "0000:5e:00.0");
        Host(1, "ahci", "0000:00:17.0");
        root.Write("/proc/devices",
                   "Character devices:\n  1 mem\n  4 tty\n239 megaraid_sas_ioctl\n"
                   "240 nvme\n\nBlock devices:\n  8 sd\n242 megaraid_sas_ioctl\n");
        mfi.answers[0].data = kPerc;
        mfi.answers[5].data = CtrlInfo("PERC H740P Adapter", "51.16.0-4076",
                                       {{"APP", "5.160.02-3552"}, {"BIOS", "7.16.00.0_0x07100501"}},
                                       {{"APP", "5.190.02-3610"}});
    }
};

TEST_F(MegaraidTest, PackageVersionOnThePciFunctionThroughAPrivateNodeRemovedAfterwards) {
    const std::string xml = Run();
    EXPECT_THAT(Failures(xml), ElementsAre());
    auto devices = Select(xml, "//Device[@vendorID='1000']");
    ASSERT_EQ(devices.size(), 2u) << xml;
    EXPECT_EQ(devices[0]["enum"] + " " + devices[0]["deviceID"] + " " + devices[0]["subDeviceID"] + " " +
                  devices[0]["display"],
              "0000:18:00.0 005d 1f47 Broadcom / LSI MegaRAID SAS-3 3108 [Invader]");
    auto apps = Select(xml, "//Device[@vendorID='1000']/Application[@componentType='FRMW']");
    ASSERT_EQ(apps.size(), 2u);
    EXPECT_EQ(apps[0]["version"], "25.5.9.0001");
    EXPECT_EQ(apps[0]["display"],
              "PERC H730P Mini firmware package (megaraid_sas): APP 4.300.00-8366, BIOS "
              "6.30.04.0_4.17.08.00_0x06120304");
    EXPECT_EQ(apps[1]["version"], "51.16.0-4076");
    EXPECT_EQ(apps[1]["display"],
              "PERC H740P Adapter firmware package (megaraid_sas): APP 5.160.02-3552, BIOS "
              "7.16.00.0_0x07100501; after the next reset: APP 5.190.02-3610");
    // The character major, not the block one; one node for both, removed at the end.
    EXPECT_THAT(mfi.calls,
                ElementsAre("mknod 239", "dcmd /private/megaraid_sas_ioctl_node host0 0x01010000 2048 5000",
                            "dcmd /private/megaraid_sas_ioctl_node host5 0x01010000 2048 5000",
                            "remove /private/megaraid_sas_ioctl_node"));
    EXPECT_THAT(log.str(), HasSubstr("megaraid_sas host0 (0000:18:00.0): firmware package 25.5.9.0001"));
    // The driver's own node, where there is one, is used as it is.
    root.Write("/dev/megaraid_sas_ioctl_node");
    mfi.calls.clear();
    EXPECT_THAT(Failures(Run()), ElementsAre());
    EXPECT_THAT(mfi.calls,
                ElementsAre("dcmd " + root.path + "/dev/megaraid_sas_ioctl_node host0 0x01010000 2048 5000",
                            "dcmd " + root.path + "/dev/megaraid_sas_ioctl_node host5 0x01010000 2048 5000"));
}

// Whatever goes wrong with one controller is a failure naming it; the other is still reported.
TEST_F(MegaraidTest, EachControllerThatCannotBeReadIsAFailureNamingIt) {
    Bytes noPackage = CtrlInfo("PERC H330 Mini", "", {{"APP", "25.5.8.0001"}});
    const struct {
        const char* name;
        FakeMfi::Answer answer;  // of host 5
        const char* version;     // of host 5, or the failure
    } rows[] = {
        {"answered", {0, 0, mfi.answers[5].data}, "51.16.0-4076"},
        {"no package version: the APP image", {0, 0, noPackage}, "25.5.8.0001"},
        {"truncated answer",
         {0, 0, Bytes(kPerc.begin(), kPerc.begin() + 1024)},
         "controller information of 1024 bytes"},
        {"MFI status not OK", {0, 0x03, kPerc}, "MR_DCMD_CTRL_GET_INFO completed with MFI status 0x03"},
        {"permission denied", {EACCES, 0, {}}, "open /private/megaraid_sas_ioctl_node: Permission denied"},
        {"no answer in time", {ETIMEDOUT, 0, {}}, "Connection timed out"},
        {"no version at all",
         {0, 0, CtrlInfo("PERC H330 Mini", "", {{"BIOS", "6.1"}})},
         "names no firmware package"},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        mfi.answers[5] = row.answer;
        mfi.calls.clear();
        const std::string xml = Run();
        auto apps = Select(xml, "//Device[@enum='0000:5e:00.0']/Application");
        EXPECT_EQ(Select(xml, "//Device[@enum='0000:18:00.0']/Application")[0]["version"], "25.5.9.0001");
        if (apps.size() == 1) {
            EXPECT_EQ(apps[0]["version"], row.version);
            EXPECT_THAT(Failures(xml), ElementsAre());
        } else {
            EXPECT_THAT(Failures(xml), ElementsAre(AllOf(HasSubstr("megaraid_sas host5 (0000:5e:00.0)"),
                                                         HasSubstr(row.version))));
        }
        EXPECT_EQ(mfi.calls.back(), "remove /private/megaraid_sas_ioctl_node");
    }
}

TEST_F(MegaraidTest, WithoutAManagementNodeEveryControllerIsAFailure) {
    const struct {
        const char* name;
        const char* devices;  // /proc/devices; null: unreadable
        int mknodFailure;
        const char* failure;
    } rows[] = {
        {"not registered", "Character devices:\n  1 mem\n\nBlock devices:\n242 megaraid_sas_ioctl\n", 0,
         "no /dev/megaraid_sas_ioctl_node and no megaraid_sas_ioctl in /proc/devices"},
        {"no /proc/devices", nullptr, 0, "/proc/devices"},
        {"mknod not allowed", "Character devices:\n239 megaraid_sas_ioctl\n", EPERM,
         "mknod /private/megaraid_sas_ioctl_node: Operation not permitted"},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        std::filesystem::remove(root.path + "/proc/devices");
        if (row.devices) root.Write("/proc/devices", row.devices);
        mfi.mknodFailure = row.mknodFailure;
        mfi.calls.clear();
        const std::string xml = Run();
        EXPECT_THAT(Failures(xml),
                    ElementsAre(AllOf(HasSubstr("host0 (0000:18:00.0)"), HasSubstr(row.failure)),
                                AllOf(HasSubstr("host5 (0000:5e:00.0)"), HasSubstr(row.failure))));
        EXPECT_TRUE(Select(xml, "//Device[@vendorID='1000']").empty());
        // One try at the node, none at the controllers, nothing left to remove.
        EXPECT_EQ(mfi.calls,
                  row.mknodFailure ? std::vector<std::string>{"mknod 239"} : std::vector<std::string>{});
    }
}

// The packet the driver takes: host number, where the frame's SGL is, one buffer; a DCMD frame
// reading into it, little-endian.
TEST(MfiControllerInfoTest, DcmdPacketInTheDriversLayout) {
    uint8_t buffer[16];
    MfiIocPacket packet;
    BuildMfiDcmd(packet, 0x1234, kMfiCtrlGetInfo, buffer, kMfiCtrlInfoSize);
    const uint8_t* bytes = reinterpret_cast<const uint8_t*>(&packet);
    EXPECT_EQ(sizeof packet, 404u);
    EXPECT_EQ(Bytes(bytes, bytes + 20),
              (Bytes{0x34, 0x12, 0, 0, 0x28, 0, 0, 0, 1, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0}));
    const Bytes frame(bytes + 20, bytes + 20 + 0x28);
    EXPECT_EQ(frame, (Bytes{0x05, 0, 0xFF, 0, 0,    0,    0, 1, 0, 0, 0,    0,
                            0,    0, 0,    0,                                      // cmd, status, SGE count
                            0x10, 0, 0,    0, 0x00, 0x08, 0, 0, 0, 0, 0x01, 0x01,  // read; 2048 bytes; opcode
                            0,    0, 0,    0, 0,    0,    0, 0, 0, 0, 0,    0}));  // mailbox
    EXPECT_EQ(kMfiStatusOffset, 22u);
    void* base;
    size_t length;
    std::memcpy(&base, bytes + 148, sizeof base);
    std::memcpy(&length, bytes + 148 + sizeof base, sizeof length);
    EXPECT_EQ(base, buffer);
    EXPECT_EQ(length, 2048u);
    EXPECT_EQ(kMfiCtrlGetInfo, 0x01010000u);
}

TEST(MfiControllerInfoTest, ParsesTheFieldsAtTheirOffsets) {
    Bytes qemu = CtrlInfo("LSI MegaRAID SAS 2108", "2.5+-QEMU", {{"APP", "3.400.05-"}});
    MfiControllerInfo info;
    std::string why;
    ASSERT_TRUE(ParseMfiControllerInfo(qemu, info, why));
    EXPECT_EQ(info.productName + "|" + info.packageVersion, "LSI MegaRAID SAS 2108|2.5+-QEMU");
    ASSERT_EQ(info.images.size(), 1u);
    EXPECT_EQ(info.images[0].name + " " + info.images[0].version, "APP 3.400.05-");
    EXPECT_TRUE(info.pending.empty());
    // Counts past the eight slots are held to them; a field without its NUL ends at its size.
    qemu[180] = 200;
    std::fill(qemu.begin() + 1600, qemu.begin() + 1696, 'x');
    ASSERT_TRUE(ParseMfiControllerInfo(qemu, info, why));
    EXPECT_EQ(info.images.size(), 1u);  // the empty slots are left out
    EXPECT_EQ(info.packageVersion, std::string(96, 'x'));
    EXPECT_FALSE(ParseMfiControllerInfo(Bytes(qemu.begin(), qemu.begin() + 1695), info, why));
    EXPECT_EQ(why, "controller information of 1695 bytes");
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

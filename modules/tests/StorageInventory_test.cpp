#include "StorageInventory.h"

#include <gtest/gtest.h>

#include "ModuleTestSupport.h"

using svmtest::FakeRoot;
using svmtest::Select;

namespace svm {
namespace {

std::string Collect(const FakeRoot& root) {
    SvmDocument doc;
    ModuleOptions options;
    options.root = root.Path();
    CollectStorageInventory(options, doc);
    return doc.ToString();
}

class StorageInventoryTest : public ::testing::Test {
  protected:
    void SetUp() override {
        // NVMe controller on PCI, with a namespace block device.
        root.Write("/sys/devices/pci0000:00/0000:01:00.0/nvme/nvme0/model", "Fast NVMe 1TB          \n");
        root.Write("/sys/devices/pci0000:00/0000:01:00.0/nvme/nvme0/firmware_rev", "2B2QEXM7\n");
        root.Write("/sys/devices/pci0000:00/0000:01:00.0/nvme/nvme0/address", "0000:01:00.0\n");
        root.Link("../../devices/pci0000:00/0000:01:00.0/nvme/nvme0", "/sys/class/nvme/nvme0");
        root.MakeDir("/sys/devices/pci0000:00/0000:01:00.0/nvme/nvme0/nvme0n1");
        root.Link("../../devices/pci0000:00/0000:01:00.0/nvme/nvme0/nvme0n1", "/sys/class/block/nvme0n1");
        root.Link("../../nvme0", "/sys/devices/pci0000:00/0000:01:00.0/nvme/nvme0/nvme0n1/device");

        // SATA disk behind an AHCI port, with a partition.
        const std::string sata = "/sys/devices/pci0000:00/0000:00:17.0/ata3/host2/target2:0:0/2:0:0:0";
        root.Write(sata + "/vendor", "ATA     \n");
        root.Write(sata + "/model", "SSD <Pro> & Co   \n");
        root.Write(sata + "/rev", "DL43\n");
        root.MakeDir(sata + "/block/sda/sda1");
        root.Write(sata + "/block/sda/sda1/partition", "1\n");
        root.Link(".." + std::string(
                             "/../devices/pci0000:00/0000:00:17.0/ata3/host2/target2:0:0/2:0:0:0/block/sda"),
                  "/sys/class/block/sda");
        root.Link("../../../2:0:0:0", sata + "/block/sda/device");
        root.Link(
            ".." + std::string(
                       "/../devices/pci0000:00/0000:00:17.0/ata3/host2/target2:0:0/2:0:0:0/block/sda/sda1"),
            "/sys/class/block/sda1");

        // SAS disk behind a RAID/HBA adapter.
        const std::string sas =
            "/sys/devices/pci0000:3a/0000:3a:00.0/0000:3b:00.0/host0/port-0:0/end_device-0:0/"
            "target0:0:0/0:0:0:0";
        root.Write(sas + "/vendor", "SEAGATE \n");
        root.Write(sas + "/model", "ST1200MM0099    \n");
        root.Write(sas + "/rev", "ST31\n");
        root.MakeDir(sas + "/block/sdb");
        root.Link(
            "../../devices/pci0000:3a/0000:3a:00.0/0000:3b:00.0/host0/port-0:0/end_device-0:0/target0:0:0/"
            "0:0:0:0/block/sdb",
            "/sys/class/block/sdb");
        root.Link("../../../0:0:0:0", sas + "/block/sdb/device");

        // Virtio disk: no model or revision.
        root.MakeDir("/sys/devices/pci0000:00/0000:00:02.0/virtio1/block/vda");
        root.Link("../../devices/pci0000:00/0000:00:02.0/virtio1/block/vda", "/sys/class/block/vda");
        root.Link("../../../virtio1", "/sys/devices/pci0000:00/0000:00:02.0/virtio1/block/vda/device");
    }
    FakeRoot root;
};

TEST_F(StorageInventoryTest, ReportsNvmeAndScsiFirmwareAsNonPciDevices) {
    std::string xml = Collect(root);
    auto devices = Select(xml, "/SVMInventory/Device");
    ASSERT_EQ(3u, devices.size()) << xml;
    EXPECT_EQ("NVMe.0000:01:00.0", devices[0]["FQDD"]);
    EXPECT_EQ("Fast NVMe 1TB", devices[0]["display"]);
    EXPECT_EQ("", devices[0]["componentID"]);
    EXPECT_EQ("Disk.0000:00:17.0.ata-3", devices[1]["FQDD"]);
    EXPECT_EQ("SSD <Pro> & Co", devices[1]["display"]);  // "ATA" vendor left out
    EXPECT_EQ("Disk.0000:3b:00.0.scsi-0:0:0:0", devices[2]["FQDD"]);
    EXPECT_EQ("SEAGATE ST1200MM0099", devices[2]["display"]);
    EXPECT_EQ(0u, Select(xml, "//Device[@vendorID]").size());

    auto apps = Select(xml, "/SVMInventory/Device/Application");
    ASSERT_EQ(3u, apps.size());
    EXPECT_EQ("2B2QEXM7", apps[0]["version"]);
    EXPECT_EQ("DL43", apps[1]["version"]);
    EXPECT_EQ("ST31", apps[2]["version"]);
    for (auto& app : apps) EXPECT_EQ("FRMW", app["componentType"]);
    EXPECT_EQ(0u, Select(xml, "//SPStatus").size());
}

TEST_F(StorageInventoryTest, UnreadableFirmwareIsReported) {
    ::unlink((root.Path() + "/sys/devices/pci0000:00/0000:01:00.0/nvme/nvme0/firmware_rev").c_str());
    std::string xml = Collect(root);
    auto status = Select(xml, "/SVMInventory/SPStatus[@result='false']/Message");
    ASSERT_EQ(1u, status.size());
    EXPECT_NE(std::string::npos, status[0]["#text"].find("firmware_rev"));
    EXPECT_EQ(2u, Select(xml, "//Device").size());
}

TEST(StorageInventoryFailureTest, MissingBlockClassIsReported) {
    FakeRoot root;
    auto status = Select(Collect(root), "/SVMInventory/SPStatus[@result='false']/Message");
    ASSERT_EQ(1u, status.size());
    EXPECT_NE(std::string::npos, status[0]["#text"].find("/sys/class/block"));
}

struct FqddCase {
    std::string path, fqdd;
};

class DiskFqddTest : public ::testing::TestWithParam<FqddCase> {};

TEST_P(DiskFqddTest, Builds) { EXPECT_EQ(GetParam().fqdd, DiskFqdd(GetParam().path)); }

INSTANTIATE_TEST_SUITE_P(
    Table, DiskFqddTest,
    ::testing::Values(FqddCase{"/sys/devices/pci0000:00/0000:00:17.0/ata1/host0/target0:0:0/0:0:0:0",
                               "Disk.0000:00:17.0.ata-1"},
                      FqddCase{"/sys/devices/pci0000:00/0000:00:1c.0/0000:02:00.0/host4/target4:2:1/4:2:1:0",
                               "Disk.0000:02:00.0.scsi-4:2:1:0"},
                      FqddCase{"/sys/devices/platform/host3/target3:0:0/3:0:0:0", "Disk.scsi-3:0:0:0"},
                      FqddCase{
                          "/sys/devices/pci0000:00/0000:00:14.0/usb2/2-1/2-1:1.0/host6/target6:0:0/6:0:0:0",
                          "Disk.0000:00:14.0.scsi-6:0:0:0"}));

}  // namespace
}  // namespace svm

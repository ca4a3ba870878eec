#include "StorageInventory.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include "ModuleTestSupport.h"

using svmtest::Collect;
using svmtest::Failures;
using svmtest::Select;

namespace svm {
namespace {

class StorageInventoryTest : public ::testing::Test {
protected:
    void SetUp() override {
        const std::string nvme = "/sys/devices/pci0000:00/0000:01:00.0/nvme/nvme0";
        root.Write(nvme + "/model", "Fast NVMe 1TB          \n");
        root.Write(nvme + "/firmware_rev", "2B2QEXM7\n");
        root.Write(nvme + "/address", "0000:01:00.0\n");
        root.Link("../.." + nvme.substr(4), "/sys/class/nvme/nvme0");
        Disk(nvme + "/nvme0n1", "../../nvme0", "nvme0n1");
        Scsi("/sys/devices/pci0000:00/0000:00:17.0/ata3/host2/target2:0:0/2:0:0:0", "ATA", "SSD <Pro> & Co",
             "DL43", "sda");
        root.Write(
            "/sys/devices/pci0000:00/0000:00:17.0/ata3/host2/target2:0:0/2:0:0:0/block/sda/sda1/partition",
            "1\n");
        root.Link("../../devices/pci0000:00/0000:00:17.0/ata3/host2/target2:0:0/2:0:0:0/block/sda/sda1",
                  "/sys/class/block/sda1");
        Scsi(
            "/sys/devices/pci0000:3a/0000:3a:00.0/0000:3b:00.0/host0/port-0:0/end_device-0:0/target0:0:0/"
            "0:0:0:0",
            "SEAGATE", "ST1200MM0099", "ST31", "sdb");
        Disk("/sys/devices/pci0000:00/0000:00:02.0/virtio1/block/vda", "../../../virtio1", "vda");
    }
    // A block device at path, its device link and its class link.
    void Disk(const std::string& path, const std::string& device, const std::string& name) {
        root.MakeDir(path);
        root.Link(device, path + "/device");
        root.Link("../.." + path.substr(4), "/sys/class/block/" + name);
    }
    void Scsi(const std::string& path, const std::string& vendor, const std::string& model,
              const std::string& rev, const std::string& name) {
        root.Write(path + "/vendor", vendor + "     \n");
        root.Write(path + "/model", model + "   \n");
        root.Write(path + "/rev", rev + "\n");
        Disk(path + "/block/" + name, "../../../" + path.substr(path.rfind('/') + 1), name);
    }
    svmtest::FakeRoot root;
};

TEST_F(StorageInventoryTest, ReportsNvmeAndScsiFirmwareAsNonPciDevices) {
    const std::string xml = Collect(CollectStorageInventory, root);
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
    EXPECT_TRUE(Failures(xml).empty());
}

TEST_F(StorageInventoryTest, UnreadableFirmwareOrMissingBlockClassIsReported) {
    ::unlink((root.Path() + "/sys/devices/pci0000:00/0000:01:00.0/nvme/nvme0/firmware_rev").c_str());
    const std::string xml = Collect(CollectStorageInventory, root);
    EXPECT_EQ(2u, Select(xml, "//Device").size());
    ASSERT_EQ(1u, Failures(xml).size());
    EXPECT_NE(std::string::npos, Failures(xml)[0].find("firmware_rev"));
    svmtest::FakeRoot empty;
    auto failures = Failures(Collect(CollectStorageInventory, empty));
    ASSERT_EQ(1u, failures.size());
    EXPECT_NE(std::string::npos, failures[0].find("/sys/class/block"));
}

TEST(DiskFqddTest, Builds) {
    const std::pair<const char*, const char*> rows[] = {
        {"/sys/devices/pci0000:00/0000:00:17.0/ata1/host0/target0:0:0/0:0:0:0", "Disk.0000:00:17.0.ata-1"},
        {"/sys/devices/pci0000:00/0000:00:1c.0/0000:02:00.0/host4/target4:2:1/4:2:1:0",
         "Disk.0000:02:00.0.scsi-4:2:1:0"},
        {"/sys/devices/platform/host3/target3:0:0/3:0:0:0", "Disk.scsi-3:0:0:0"},
        {"/sys/devices/pci0000:00/0000:00:14.0/usb2/2-1/2-1:1.0/host6/target6:0:0/6:0:0:0",
         "Disk.0000:00:14.0.scsi-6:0:0:0"}};
    for (const auto& row : rows) EXPECT_EQ(row.second, DiskFqdd(row.first));
}

}  // namespace
}  // namespace svm

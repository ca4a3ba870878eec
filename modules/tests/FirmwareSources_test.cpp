#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>

#include "FirmwareInventory.h"
#include "ModuleTestSupport.h"

namespace {

using svm::CollectFirmwareInventory;
using svmtest::Collect;
using svmtest::Failures;
using svmtest::FakeRoot;
using svmtest::Select;
using testing::ElementsAre;
using testing::HasSubstr;

// One machine with every source, laid out as the kernel does.
struct FirmwareSourcesTest : ::testing::Test {
    FirmwareSourcesTest() {
        const std::string esrt = "/sys/firmware/efi/esrt/entries/";
        const struct {
            const char *entry, *guid, *version, *lowest, *type;
        } entries[] = {{"entry0", "4B8A1B5A-0F6F-4E7A-8D51-E5A3A1C0F2D1", "16908800", "16843008", "1"},
                       {"entry1", "a5b0d9c2-3e4f-4a1b-9c8d-7e6f5a4b3c2d", "65", "0", "2"}};
        for (const auto& e : entries) {
            root.Write(esrt + e.entry + "/fw_class", std::string(e.guid) + "\n");
            root.Write(esrt + e.entry + "/fw_version", std::string(e.version) + "\n");
            root.Write(esrt + e.entry + "/lowest_supported_fw_version", std::string(e.lowest) + "\n");
            root.Write(esrt + e.entry + "/fw_type", std::string(e.type) + "\n");
            root.Write(esrt + e.entry + "/capsule_flags", "0xfe\n");
        }
        // A ConnectX adapter: /sys/class/infiniband/mlx5_0 -> the function's infiniband/mlx5_0.
        root.AddPci("0000:3b:00.0", "15b3 1017 15b3 0020 020000", "mlx5_core");
        root.Write("/sys/devices/pci0000:00/0000:3b:00.0/infiniband/mlx5_0/fw_ver", "16.35.2000\n");
        root.Link("../../devices/pci0000:00/0000:3b:00.0/infiniband/mlx5_0", "/sys/class/infiniband/mlx5_0");
        root.Link("../../../0000:3b:00.0", "/sys/devices/pci0000:00/0000:3b:00.0/infiniband/mlx5_0/device");
        // An amdgpu card and its connector, and a GPU of the proprietary driver.
        root.AddPci("0000:c1:00.0", "1002 73bf 1002 0e3a 030000", "amdgpu");
        root.Write("/sys/devices/pci0000:00/0000:c1:00.0/vbios_version", "113-D4120100-100\n");
        root.Link("../../devices/pci0000:00/0000:c1:00.0/drm/card0", "/sys/class/drm/card0");
        root.Link("../../devices/pci0000:00/0000:c1:00.0/drm/card0/card0-DP-1", "/sys/class/drm/card0-DP-1");
        root.Link("../../../0000:c1:00.0", "/sys/devices/pci0000:00/0000:c1:00.0/drm/card0/device");
        root.AddPci("0000:af:00.0", "10de 20b5 10de 1533 030200", "nvidia");
        root.Write("/proc/driver/nvidia/gpus/0000:af:00.0/information",
                   "Model: \t\t NVIDIA A100 80GB PCIe\nIRQ:   \t\t 180\nVideo BIOS: \t 92.00.68.00.01\n"
                   "Bus Type: \t PCIe\nBus Location: \t 0000:af:00.0\n");
        // A SAS host adapter (mpt3sas names its firmware attribute version_fw).
        root.AddPci("0000:5e:00.0", "1000 00ab 1000 4000 010700", "mpt3sas");
        root.Write("/sys/devices/pci0000:00/0000:5e:00.0/host2/scsi_host/host2/version_fw", "24.00.00.00\n");
        root.Write("/sys/devices/pci0000:00/0000:5e:00.0/host2/scsi_host/host2/proc_name", "mpt3sas\n");
        root.Link("../../devices/pci0000:00/0000:5e:00.0/host2/scsi_host/host2",
                  "/sys/class/scsi_host/host2");
        root.Link("../../../host2", "/sys/devices/pci0000:00/0000:5e:00.0/host2/scsi_host/host2/device");
        // Thunderbolt: the host router with NVM, a domain without.
        root.Write("/sys/bus/thunderbolt/devices/0-0/nvm_version", "56.0\n");
        root.Write("/sys/bus/thunderbolt/devices/0-0/vendor_name", "Intel\n");
        root.Write("/sys/bus/thunderbolt/devices/0-0/device_name", "Maple Ridge\n");
        root.Write("/sys/bus/thunderbolt/devices/domain0/security", "user\n");
    }
    FakeRoot root;
};

TEST_F(FirmwareSourcesTest, EverySourceBecomesAFirmwareEntryOnItsDevice) {
    const std::string xml = Collect(CollectFirmwareInventory, root);
    EXPECT_THAT(Failures(xml), ElementsAre()) << xml;
    const struct {
        const char* device;  // XPath of the device
        const char* version;
    } rows[] = {
        {"Device[@FQDD='ESRT.4b8a1b5a-0f6f-4e7a-8d51-e5a3a1c0f2d1']", "16908800"},
        {"Device[@FQDD='ESRT.a5b0d9c2-3e4f-4a1b-9c8d-7e6f5a4b3c2d']", "65"},
        {"Device[@enum='0000:3b:00.0' and @vendorID='15b3']", "16.35.2000"},
        {"Device[@enum='0000:c1:00.0' and @deviceID='73bf']", "113-D4120100-100"},
        {"Device[@enum='0000:af:00.0' and @bus='af']", "92.00.68.00.01"},
        {"Device[@enum='0000:5e:00.0']", "24.00.00.00"},
        {"Device[@FQDD='Thunderbolt.0-0' and @display='Intel Maple Ridge']", "56.0"},
    };
    EXPECT_EQ(Select(xml, "/SVMInventory/Device").size(), std::size(rows)) << xml;
    for (const auto& row : rows) {
        auto apps =
            Select(xml, std::string("/SVMInventory/") + row.device + "/Application[@componentType='FRMW']");
        ASSERT_EQ(apps.size(), 1u) << row.device << "\n" << xml;
        EXPECT_EQ(apps[0]["version"], row.version);
    }
    EXPECT_EQ(
        Select(xml, "//Device[@FQDD='ESRT.4b8a1b5a-0f6f-4e7a-8d51-e5a3a1c0f2d1']/Application")[0]["display"],
        "System firmware (lowest supported 16843008)");
}

TEST_F(FirmwareSourcesTest, AbsentSourcesAreSilentAndUnreadableOnesNameThePath) {
    FakeRoot empty;
    const std::string none = Collect(CollectFirmwareInventory, empty);
    EXPECT_THAT(Failures(none), ElementsAre());
    EXPECT_TRUE(Select(none, "//Device").empty());
    // A firmware attribute that cannot be read, and control bytes in a value.
    std::filesystem::remove(root.path + "/sys/devices/pci0000:00/0000:3b:00.0/infiniband/mlx5_0/fw_ver");
    root.Write("/sys/devices/pci0000:00/0000:3b:00.0/infiniband/mlx5_0/fw_ver/");
    root.Write("/sys/bus/thunderbolt/devices/0-0/nvm_version",
               "56.\x01\xff"
               "0\n");
    const std::string xml = Collect(CollectFirmwareInventory, root);
    EXPECT_THAT(Failures(xml), ElementsAre(HasSubstr("/sys/class/infiniband/mlx5_0/fw_ver")));
    EXPECT_EQ(Select(xml, "//Device[@FQDD='Thunderbolt.0-0']/Application")[0]["version"], "56. ?0");
    EXPECT_EQ(Select(xml, "/SVMInventory/Device").size(), 6u);
}

}  // namespace

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <filesystem>
#include <map>

#include "FirmwareInventory.h"
#include "ModuleTestSupport.h"
#include "TpmCapability.h"

namespace {

using svm::CollectFirmwareInventory;
using svmtest::Collect;
using svmtest::Failures;
using svmtest::FakeRoot;
using svmtest::Select;
using testing::AllOf;
using testing::ElementsAre;
using testing::HasSubstr;

using Bytes = std::vector<uint8_t>;

Bytes FromHex(const std::string& hex) {
    Bytes out;
    for (size_t i = 0; i + 1 < hex.size(); i += 2) out.push_back(std::stoi(hex.substr(i, 2), nullptr, 16));
    return out;
}

// Responses of a software TPM 2.0 (manufacturer "IBM") to TPM2_GetCapability
// for 8 properties from TPM_PT_MANUFACTURER, and for an unknown capability.
const std::string kSwtpmProperties =
    "800100000053000000000100000006000000080000010549424d000000010653572020000001072054504d00000108000000"
    "0000000109000000000000010a000000010000010b201910230000010c00163636";
const std::string kSwtpmBadCapability = "80010000000a000001c4";

// A TPM on /dev/tpmrm0: answers the scripted responses in turn, then from
// its property table at most perAnswer properties at a time, as a chip with
// a small response buffer does.
struct FakeTpm : svm::ITpmDevice {
    std::vector<Bytes> scripted;
    std::map<uint32_t, uint32_t> table;
    uint32_t perAnswer = 64;
    int failure = 0;
    std::vector<Bytes> commands;
    int Transact(const std::string& path, const Bytes& command, Bytes& response,
                 std::string& error) override {
        commands.push_back(command);
        error = "cannot open " + path + ": " + std::strerror(failure);
        if (failure != 0) return failure;
        if (commands.size() <= scripted.size()) {
            response = scripted[commands.size() - 1];
            return 0;
        }
        const uint32_t from = Get32(command, 14), count = std::min(Get32(command, 18), perAnswer);
        Bytes body = {0, 0, 0, 0, 6, 0, 0, 0, 0};
        uint32_t n = 0;
        auto it = table.lower_bound(from);
        for (; it != table.end() && n < count; ++it, ++n) Put32(body, it->first), Put32(body, it->second);
        body[0] = it != table.end();
        body[8] = static_cast<uint8_t>(n);
        response = {0x80, 0x01};
        Put32(response, static_cast<uint32_t>(10 + body.size()));
        Put32(response, 0);
        response.insert(response.end(), body.begin(), body.end());
        return 0;
    }
    static uint32_t Get32(const Bytes& b, size_t at) {
        return uint32_t(b[at]) << 24 | uint32_t(b[at + 1]) << 16 | uint32_t(b[at + 2]) << 8 | b[at + 3];
    }
    static void Put32(Bytes& b, uint32_t v) {
        for (int shift = 24; shift >= 0; shift -= 8) b.push_back(static_cast<uint8_t>(v >> shift));
    }
};

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
    std::string Run() { return Collect(CollectFirmwareInventory, root, tpm); }
    FakeRoot root;
    FakeTpm tpm;
};

TEST_F(FirmwareSourcesTest, EverySourceBecomesAFirmwareEntryOnItsDevice) {
    const std::string xml = Run();
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
    const std::string none = Collect(CollectFirmwareInventory, empty, tpm);
    EXPECT_THAT(Failures(none), ElementsAre());
    EXPECT_TRUE(Select(none, "//Device").empty());
    // A firmware attribute that cannot be read, and control bytes in a value.
    std::filesystem::remove(root.path + "/sys/devices/pci0000:00/0000:3b:00.0/infiniband/mlx5_0/fw_ver");
    root.Write("/sys/devices/pci0000:00/0000:3b:00.0/infiniband/mlx5_0/fw_ver/");
    root.Write("/sys/bus/thunderbolt/devices/0-0/nvm_version",
               "56.\x01\xff"
               "0\n");
    const std::string xml = Run();
    EXPECT_THAT(Failures(xml), ElementsAre(HasSubstr("/sys/class/infiniband/mlx5_0/fw_ver")));
    EXPECT_EQ(Select(xml, "//Device[@FQDD='Thunderbolt.0-0']/Application")[0]["version"], "56. ?0");
    EXPECT_EQ(Select(xml, "/SVMInventory/Device").size(), 6u);
    EXPECT_TRUE(tpm.commands.empty());  // no /dev/tpmrm0: the TPM is not asked
}

TEST_F(FirmwareSourcesTest, TpmFirmwareVersionFromGetCapability) {
    root.Write("/dev/tpmrm0");
    tpm.scripted = {FromHex(kSwtpmProperties)};
    const std::string xml = Run();
    EXPECT_THAT(Failures(xml), ElementsAre()) << xml;
    auto devices = Select(xml, "//Device[@FQDD='TPM.tpm0']");
    ASSERT_EQ(devices.size(), 1u) << xml;
    EXPECT_EQ(devices[0]["display"], "TPM 2.0 (IBM)");
    // TPM_PT_FIRMWARE_VERSION_1 0x20191023, _2 0x00163636.
    EXPECT_EQ(Select(xml, "//Device[@FQDD='TPM.tpm0']/Application[@componentType='FRMW']")[0]["version"],
              "8217.4131.22.13878");
    // No sessions, GetCapability, TPM_CAP_TPM_PROPERTIES, from TPM_PT_MANUFACTURER, 8 properties.
    ASSERT_EQ(tpm.commands.size(), 1u);
    EXPECT_EQ(tpm.commands[0], FromHex("8001000000160000017a000000060000010500000008"));
}

TEST_F(FirmwareSourcesTest, TpmHandingOutFewPropertiesIsAskedAgainFromTheLastOne) {
    root.Write("/dev/tpmrm0");
    tpm.table = {{0x100, 0x322e3000}, {0x105, 0x494e5443}, {0x106, 1}, {0x107, 2},
                 {0x108, 3},          {0x109, 4},          {0x10a, 5}, {0x10b, 0x0007003f},
                 {0x10c, 0x0011cb00}, {0x10d, 0x400}};
    tpm.perAnswer = 3;
    const std::string xml = Run();
    EXPECT_THAT(Failures(xml), ElementsAre()) << xml;
    auto apps = Select(xml, "//Device[@FQDD='TPM.tpm0' and @display='TPM 2.0 (INTC)']/Application");
    ASSERT_EQ(apps.size(), 1u) << xml;
    EXPECT_EQ(apps[0]["version"], "7.63.17.51968");
    ASSERT_EQ(tpm.commands.size(), 3u);
    EXPECT_EQ(FakeTpm::Get32(tpm.commands[1], 14), 0x108u);
    EXPECT_EQ(FakeTpm::Get32(tpm.commands[2], 14), 0x10bu);
}

// Every answer that is not a usable property list is one failure naming the device, never a crash.
TEST_F(FirmwareSourcesTest, TpmFailuresNameTheDeviceAndTheReason) {
    root.Write("/dev/tpmrm0");
    const Bytes good = FromHex(kSwtpmProperties);
    Bytes countTooLarge = good;
    countTooLarge[18] = 0x40;
    Bytes wrongCapability = good;
    wrongCapability[14] = 0x07;
    const Bytes lastByteMissing(good.begin(), good.end() - 1);
    const Bytes noFirmwareVersion = FromHex(
        "8001000000230000000000000000060000000200000105"
        "49424d00"
        "00000106"
        "53572020");
    const struct {
        const char* name;
        Bytes response;
        int failure;
        const char* message;
    } rows[] = {
        {"error response code", FromHex(kSwtpmBadCapability), 0, "TPM response code 0x1c4"},
        {"header cut short", Bytes(good.begin(), good.begin() + 6), 0, "short TPM response of 6 bytes"},
        {"size beyond what was read", lastByteMissing, 0, "TPM response size 83 with 82 bytes received"},
        {"more properties than bytes", countTooLarge, 0, "lists 64 properties in 83 bytes"},
        {"another capability", wrongCapability, 0, "not a list of TPM properties"},
        {"session tag",
         FromHex("80020000001300000000"
                 "00"
                 "00000006"
                 "00000000"),
         0, "TPM response tag 0x8002"},
        {"no firmware version", noFirmwareVersion, 0, "no firmware version in the answer"},
        {"unreadable device", {}, EACCES, "Permission denied"},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        tpm = FakeTpm();
        tpm.failure = row.failure;
        tpm.scripted = {row.response};
        const std::string xml = Run();
        EXPECT_THAT(Failures(xml), ElementsAre(AllOf(HasSubstr("/dev/tpmrm0"), HasSubstr(row.message))));
        EXPECT_TRUE(Select(xml, "//Device[@FQDD='TPM.tpm0']").empty());
    }
}

}  // namespace

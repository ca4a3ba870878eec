#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstring>
#include <filesystem>

#include "FirmwareInventory.h"
#include "ModuleTestSupport.h"

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

// The response of a software TPM 2.0 (manufacturer "IBM") to TPM2_GetCapability for
// 8 properties from TPM_PT_MANUFACTURER.
const std::string kSwtpmProperties =
    "800100000053000000000100000006000000080000010549424d000000010653572020000001072054504d00000108000000"
    "0000000109000000000000010a000000010000010b201910230000010c00163636";

uint32_t Get32(const Bytes& b, size_t at) {
    return uint32_t(b.at(at)) << 24 | uint32_t(b.at(at + 1)) << 16 | b.at(at + 2) << 8 | b.at(at + 3);
}

// A GetCapability answer listing the (property, value) pairs.
Bytes Answer(bool more, const std::vector<uint32_t>& pairs) {
    Bytes out = {0x80, 0x01, 0, 0, 0, 0, 0, 0, 0, 0, more, 0, 0, 0, 6, 0, 0, 0, uint8_t(pairs.size() / 2)};
    for (uint32_t v : pairs)
        for (int shift = 24; shift >= 0; shift -= 8) out.push_back(static_cast<uint8_t>(v >> shift));
    out[5] = static_cast<uint8_t>(out.size());
    return out;
}

// A TPM on /dev/tpmrm0 giving its answers in turn, or failing to open with failure.
struct FakeTpm : svm::ITpmDevice {
    std::vector<Bytes> answers;
    int failure = 0;
    std::vector<Bytes> commands;
    int Transact(const std::string& path, const Bytes& command, Bytes& response,
                 std::string& error) override {
        commands.push_back(command);
        error = "cannot open " + path + ": " + std::strerror(failure);
        if (failure == 0) response = answers.at(commands.size() - 1);
        return failure;
    }
};

// One machine with every source, laid out as the kernel does.
struct FirmwareSourcesTest : ::testing::Test {
    FirmwareSourcesTest() {
        for (auto [entry, guid, version, lowest, type] :
             {std::array{"entry0/", "4B8A1B5A-0F6F-4E7A-8D51-E5A3A1C0F2D1", "16908800", "16843008", "1"},
              std::array{"entry1/", "a5b0d9c2-3e4f-4a1b-9c8d-7e6f5a4b3c2d", "65", "0", "2"}})
            for (auto [file, value] : {std::pair{"fw_class", guid},
                                       {"fw_version", version},
                                       {"lowest_supported_fw_version", lowest},
                                       {"fw_type", type}})
                root.Write(std::string("/sys/firmware/efi/esrt/entries/") + entry + file,
                           std::string(value) + "\n");
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

TEST_F(FirmwareSourcesTest, EverySourceBecomesAFirmwareEntryOnItsDeviceAbsentOnesAreSilent) {
    FakeRoot empty;
    const std::string none = Collect(CollectFirmwareInventory, empty, tpm);
    EXPECT_THAT(Failures(none), ElementsAre());
    EXPECT_TRUE(Select(none, "//Device").empty());
    std::string xml = Run();
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
    EXPECT_TRUE(tpm.commands.empty());  // no /dev/tpmrm0: the TPM is not asked
    // A firmware attribute that cannot be read is a failure naming it; the other sources still count.
    std::filesystem::remove(root.path + "/sys/devices/pci0000:00/0000:3b:00.0/infiniband/mlx5_0/fw_ver");
    root.Write("/sys/devices/pci0000:00/0000:3b:00.0/infiniband/mlx5_0/fw_ver/");
    xml = Run();
    EXPECT_THAT(Failures(xml), ElementsAre(HasSubstr("/sys/class/infiniband/mlx5_0/fw_ver")));
    EXPECT_EQ(Select(xml, "/SVMInventory/Device").size(), 5u);
}

// The firmware version, also when the TPM hands out few properties at a time and is asked
// again after the last one; every answer that is not a usable property list is one failure
// naming the device, never a crash.
TEST_F(FirmwareSourcesTest, TpmFirmwareVersionFromGetCapabilityOrAFailure) {
    root.Write("/dev/tpmrm0");
    const Bytes good = FromHex(kSwtpmProperties), cutShort(good.begin(), good.begin() + 6),
                lastByteMissing(good.begin(), good.end() - 1);
    Bytes countTooLarge = good, wrongCapability = good;
    countTooLarge[18] = 0x40;
    wrongCapability[14] = 0x07;
    const struct {
        const char* name;
        std::vector<Bytes> answers;
        int failure;
        const char* result;  // display and version, or the failure
    } rows[] = {
        {"one answer", {good}, 0, "TPM 2.0 (IBM) 8217.4131.22.13878"},
        {"three properties at a time",
         {Answer(true, {0x105, 0x494e5443, 0x106, 1, 0x107, 2}), Answer(true, {0x108, 3, 0x109, 4, 0x10a, 5}),
          Answer(false, {0x10b, 0x0007003f, 0x10c, 0x0011cb00, 0x10d, 0x400})},
         0,
         "TPM 2.0 (INTC) 7.63.17.51968"},
        {"error response code", {FromHex("80010000000a000001c4")}, 0, "TPM response code 0x1c4"},
        {"header cut short", {cutShort}, 0, "short TPM response of 6 bytes"},
        {"size beyond what was read", {lastByteMissing}, 0, "TPM response size 83 with 82 bytes received"},
        {"more properties than bytes", {countTooLarge}, 0, "lists 64 properties in 83 bytes"},
        {"another capability", {wrongCapability}, 0, "not a list of TPM properties"},
        {"session tag", {FromHex("80020000001300000000000000000600000000")}, 0, "TPM response tag 0x8002"},
        {"no version", {Answer(false, {0x105, 0x49424d00, 0x106, 0x53572020})}, 0, "no firmware version"},
        {"unreadable device", {}, EACCES, "Permission denied"},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        tpm = FakeTpm();
        tpm.failure = row.failure;
        tpm.answers = row.answers;
        const std::string xml = Run();
        auto devices = Select(xml, "//Device[@FQDD='TPM.tpm0']");
        auto apps = Select(xml, "//Device[@FQDD='TPM.tpm0']/Application[@componentType='FRMW']");
        if (devices.size() == 1 && apps.size() == 1) {
            EXPECT_THAT(Failures(xml), ElementsAre());
            EXPECT_EQ(devices[0]["display"] + " " + apps[0]["version"], row.result);
        } else {
            EXPECT_THAT(Failures(xml), ElementsAre(AllOf(HasSubstr("/dev/tpmrm0"), HasSubstr(row.result))));
            EXPECT_TRUE(devices.empty());
        }
        // No sessions, GetCapability, TPM_CAP_TPM_PROPERTIES, from TPM_PT_MANUFACTURER, 8 properties;
        // each further question starts after the last property of the answer before.
        EXPECT_EQ(tpm.commands.at(0), FromHex("8001000000160000017a000000060000010500000008"));
        EXPECT_EQ(tpm.commands.size(), std::max<size_t>(row.answers.size(), 1));
        for (size_t i = 1; i < tpm.commands.size(); ++i)
            EXPECT_EQ(Get32(tpm.commands[i], 14),
                      Get32(row.answers[i - 1], row.answers[i - 1].size() - 8) + 1);
    }
}

}  // namespace

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstring>
#include <filesystem>

#include "FirmwareInventory.h"
#include "ModuleTestSupport.h"
#include "NicInventory.h"
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
        {"one answer", {good}, 0, "TPM 2.0 (IBM) 2019.1023.16.3636"},
        {"three properties at a time",
         {Answer(true, {0x105, 0x494e5443, 0x106, 1, 0x107, 2}), Answer(true, {0x108, 3, 0x109, 4, 0x10a, 5}),
          Answer(false, {0x10b, 0x000b0008, 0x10c, 0x00320d62, 0x10d, 0x400})},
         0,
         "TPM 2.0 (INTC) 11.8.50.3426"},
        {"manufacturer decides the reading",
         {Answer(false, {0x105, 0x49465800, 0x10b, 0x0007003d, 0x10c, 0x000ae100})},
         0,
         "TPM 2.0 (IFX) 7.61.2785.0"},
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

// Firmware words as each manufacturer spells them, from chips' published readings:
// tpm2_getcap dumps, the vendors' update tools and advisories.
TEST(TpmFirmwareVersionTest, EachManufacturerReadsTheWordsItsOwnWay) {
    const struct {
        uint32_t manufacturer, version1, version2;
        const char* version;
    } rows[] = {
        // Infineon SLB9670: build << 8 | patch in the second word (its update tool's "7.85.4555.0").
        {0x49465800, 0x0007003d, 0x000ae100, "7.61.2785.0"},
        {0x49465800, 0x0007003e, 0x000c3600, "7.62.3126.0"},
        {0x49465800, 0x00070055, 0x0011cb00, "7.85.4555.0"},
        // Intel PTT: the CSME firmware version in 16-bit halves.
        {0x494e5443, 0x000b0008, 0x00320d62, "11.8.50.3426"},
        // Nuvoton NPCT75x: 16-bit halves, as its security policies name 7.2.0.2 and 7.2.1.0.
        {0x4e544300, 0x00070002, 0x00000002, "7.2.0.2"},
        {0x4e544300, 0x00070002, 0x00010000, "7.2.1.0"},
        // STMicroelectronics ST33: major.minor of the first word, as its advisories list them.
        {0x53544d20, 0x00010102, 0x00000000, "1.258"},
        {0x53544d20, 0x00490014, 0x00000000, "73.20"},
        // The software TPM (libtpms): a date and a revision written in hex digits.
        {0x49424d20, 0x20191023, 0x00163636, "2019.1023.16.3636"},
        {0x49424d00, 0x20170619, 0x00163636, "2017.619.16.3636"},
        // Unknown or missing manufacturer: 16-bit halves in decimal.
        {0x414d4400, 0x00030057, 0x00000005, "3.87.0.5"},
        {0, 0xffffffff, 0x0001ffff, "65535.65535.1.65535"},
    };
    for (const auto& row : rows)
        EXPECT_EQ(svm::FormatTpmFirmwareVersion(row.manufacturer, row.version1, row.version2), row.version)
            << svm::TpmManufacturerText(row.manufacturer);
}

// Without /dev/tpmrm0 a TPM 1.2 chip's caps file names its firmware, wherever the kernel of
// the day put it; a caps file without a version is a failure naming it.
TEST(Tpm12FirmwareTest, CapsFileGivesTheFirmwareVersionOrAFailure) {
    // The example of the kernel's sysfs ABI documentation, and an Infineon chip.
    const std::string st = "Manufacturer: 0x53544d20\nTCG version: 1.2\nFirmware version: 8.16\n",
                      ifx = "Manufacturer: 0x49465800\nTCG version: 1.2\nFirmware version: 4.43\n";
    const struct {
        const char* name;
        const char* path;  // where the caps file is
        std::string caps;
        const char* result;  // FQDD, display and version, or the failure
    } rows[] = {
        {"tpm class", "/sys/class/tpm/tpm0/caps", st, "TPM.tpm0 TPM 1.2 (STM) 8.16"},
        {"parent device only", "/sys/class/tpm/tpm1/device/caps", ifx, "TPM.tpm1 TPM 1.2 (IFX) 4.43"},
        {"misc class", "/sys/class/misc/tpm0/device/caps", ifx, "TPM.tpm0 TPM 1.2 (IFX) 4.43"},
        {"chip not answering", "/sys/class/tpm/tpm0/caps", "",
         "/sys/class/tpm/tpm0/caps shows no firmware version"},
        {"TPM 2.0 chip", "/sys/class/tpm/tpm0/tpm_version_major", "2\n", ""},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        FakeRoot root;
        FakeTpm tpm;
        root.Write(row.path, row.caps);
        root.Write("/sys/class/tpm/tpmrm0/dev", "253:65536\n");
        std::string xml = Collect(CollectFirmwareInventory, root, tpm);
        auto devices = Select(xml, "/SVMInventory/Device[starts-with(@FQDD,'TPM.')]");
        auto apps = Select(xml, "/SVMInventory/Device/Application[@componentType='FRMW']");
        std::string result;
        for (const std::string& failure : Failures(xml)) result += failure;
        if (devices.size() == 1 && apps.size() == 1)
            result += devices[0]["FQDD"] + " " + devices[0]["display"] + " " + apps[0]["version"];
        if (*row.result == '\0')
            EXPECT_EQ(result, "");
        else
            EXPECT_THAT(result, HasSubstr(row.result));
        EXPECT_LE(devices.size() + Failures(xml).size(), 1u) << xml;
        // A TPM 2.0 resource manager is asked instead; the caps file is not read.
        root.Write("/dev/tpmrm0");
        tpm.answers = {FromHex(kSwtpmProperties)};
        xml = Collect(CollectFirmwareInventory, root, tpm);
        EXPECT_THAT(Failures(xml), ElementsAre());
        EXPECT_EQ(Select(xml, "//Device[@display='TPM 2.0 (IBM)']").size(), 1u);
        EXPECT_EQ(Select(xml, "//Device").size(), 1u);
    }
}

// A source that names no version, and a failed capsule update.
TEST_F(FirmwareSourcesTest, NoVersionIsAFailureAndAFailedCapsuleUpdateToo) {
    root.Write("/proc/driver/nvidia/gpus/0000:af:00.0/information",
               "Model: \t\t NVIDIA A100 80GB PCIe\nVideo BIOS: \t ??.??.??.??.??\nBus Type: \t PCIe\n"
               "Bus Location: \t 0000:af:00.0\n");
    root.Write("/sys/devices/pci0000:00/0000:c1:00.0/vbios_version", "\n");
    // An InfiniBand port whose fw_ver is empty.
    root.AddPci("0000:3c:00.0", "15b3 1017 15b3 0020 020000", "mlx5_core");
    root.Write("/sys/devices/pci0000:00/0000:3c:00.0/infiniband/mlx5_3/fw_ver", "\n");
    root.Link("../../devices/pci0000:00/0000:3c:00.0/infiniband/mlx5_3", "/sys/class/infiniband/mlx5_3");
    root.Link("../../../0000:3c:00.0", "/sys/devices/pci0000:00/0000:3c:00.0/infiniband/mlx5_3/device");
    // A failed capsule update of the system firmware; the device firmware's last one succeeded.
    root.Write("/sys/firmware/efi/esrt/entries/entry0/last_attempt_version", "16908801\n");
    root.Write("/sys/firmware/efi/esrt/entries/entry0/last_attempt_status", "3\n");
    root.Write("/sys/firmware/efi/esrt/entries/entry1/last_attempt_version", "65\n");
    root.Write("/sys/firmware/efi/esrt/entries/entry1/last_attempt_status", "0\n");
    const std::string xml = Run();
    EXPECT_THAT(
        Failures(xml),
        ElementsAre(
            AllOf(HasSubstr("ESRT entry0 (System firmware 4b8a1b5a-0f6f-4e7a-8d51-e5a3a1c0f2d1)"),
                  HasSubstr("to version 16908801, failed with status 3 (incorrect version)")),
            AllOf(HasSubstr("RDMA adapter mlx5_3 on 0000:3c:00.0"),
                  HasSubstr("/sys/class/infiniband/mlx5_3/fw_ver names no firmware version")),
            AllOf(HasSubstr("GPU 0000:c1:00.0"), HasSubstr("/sys/class/drm/card0/device/vbios_version")),
            AllOf(HasSubstr("GPU 0000:af:00.0"),
                  HasSubstr("/proc/driver/nvidia/gpus/0000:af:00.0/information names no video BIOS "
                            "version (\"??.??.??.??.??\")"))))
        << xml;
    // The entry still carries its version; the functions without one have no record.
    EXPECT_EQ(
        Select(xml, "//Device[@FQDD='ESRT.4b8a1b5a-0f6f-4e7a-8d51-e5a3a1c0f2d1']/Application")[0]["version"],
        "16908800");
    for (const char* address :
         {"0000:3b:00.1", "0000:3b:00.2", "0000:3c:00.0", "0000:af:00.0", "0000:c1:00.0"})
        EXPECT_TRUE(Select(xml, std::string("//Device[@enum='") + address + "']").empty()) << address;
    EXPECT_EQ(Select(xml, "//Device[@enum='0000:3b:00.0']/Application")[0]["version"], "16.35.2000");
}

// ETHTOOL_GDRVINFO answers by interface name.
struct EthtoolAnswers : svm::IEthtool {
    std::map<std::string, svm::EthtoolDrvInfo> answers;
    int GetDrvInfo(const std::string& ifname, svm::EthtoolDrvInfo& info, std::string&) override {
        info = answers.at(ifname);
        return 0;
    }
};

// fwinv and nicinv together give one firmware version per PCI function: ethtool's for a
// function with a network interface (mlx5 Ethernet, an IPoIB port), fw_ver for an InfiniBand
// port without one, none for an SR-IOV virtual function.
TEST(OneFirmwarePerFunctionTest, RdmaAndNetworkInterfaceOnOneFunctionGiveOneVersionVirtualFunctionsNone) {
    FakeRoot root;
    EthtoolAnswers ethtool;
    FakeTpm tpm;
    const struct {
        const char* address;
        const char* ib;      // RDMA device
        const char* ifname;  // network interface on the function, or none
        const char* physfn;  // physical function of a virtual function, or none
    } functions[] = {
        {"0000:3b:00.0", "mlx5_0", "enp59s0f0np0", nullptr},
        {"0000:3b:00.1", "mlx5_1", "ib0", nullptr},
        {"0000:5e:00.0", "mlx5_2", nullptr, nullptr},
        {"0000:3b:00.2", "mlx5_3", "enp59s0f0v0", "0000:3b:00.0"},
    };
    for (const auto& f : functions) {
        const std::string dir = std::string("/sys/devices/pci0000:00/") + f.address;
        root.AddPci(f.address, "15b3 101b 15b3 0007 020000", "mlx5_core");
        root.Write(dir + "/infiniband/" + f.ib + "/fw_ver", "20.39.1002\n");
        root.Link("../../devices/pci0000:00/" + std::string(f.address) + "/infiniband/" + f.ib,
                  std::string("/sys/class/infiniband/") + f.ib);
        root.Link("../../../" + std::string(f.address), dir + "/infiniband/" + f.ib + "/device");
        if (f.physfn) root.Link(std::string("../") + f.physfn, dir + "/physfn");
        if (!f.ifname) continue;
        root.Write(dir + "/net/" + f.ifname + "/address", "b8:ce:f6:00:00:00\n");
        root.Link("../../devices/pci0000:00/" + std::string(f.address) + "/net/" + f.ifname,
                  std::string("/sys/class/net/") + f.ifname);
        root.Link("../../../" + std::string(f.address), dir + "/net/" + f.ifname + "/device");
        // mlx5 adds the board id to ethtool's firmware version; IPoIB hands on fw_ver.
        ethtool.answers[f.ifname] = {
            f.ifname == std::string("ib0") ? "ib_ipoib" : "mlx5_core", "6.1.0",
            f.ifname == std::string("ib0") ? "20.39.1002" : "20.39.1002 (MT_0000000359)", f.address};
    }
    std::map<std::string, std::vector<std::string>> versions;  // function: versions of both modules
    for (const std::string& xml :
         {Collect(CollectFirmwareInventory, root, tpm), Collect(svm::CollectNicInventory, root, ethtool)}) {
        EXPECT_THAT(Failures(xml), ElementsAre()) << xml;
        for (auto& device : Select(xml, "/SVMInventory/Device"))
            for (auto& app : Select(xml, "/SVMInventory/Device[@enum='" + device["enum"] + "']/Application"))
                versions[device["enum"]].push_back(app["version"]);
    }
    EXPECT_EQ(versions, (std::map<std::string, std::vector<std::string>>{
                            {"0000:3b:00.0", {"20.39.1002 (MT_0000000359)"}},
                            {"0000:3b:00.1", {"20.39.1002"}},
                            {"0000:5e:00.0", {"20.39.1002"}},
                        }));
}

}  // namespace

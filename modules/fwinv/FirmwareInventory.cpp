#include "FirmwareInventory.h"

#include <cerrno>
#include <cstdlib>
#include <iterator>
#include <map>
#include <string>
#include <vector>

#include "HostAdapterFirmware.h"
#include "TpmCapability.h"
#include "svm/PciIdDatabase.h"
#include "svm/TextUtil.h"

namespace svm {
namespace {

const char kPrefix[] = "Firmware inventory: ";

// Firmware found on a PCI function, reported on that function's device.
struct PciFirmware {
    PciFunction pci;
    std::string version;
    std::string display;  // of the application; empty: the device's name
};

// The PCI function a sysfs device directory belongs to: the nearest PCI
// address among the components of its resolved path.
bool PciFunctionOf(const Sysfs& fs, const std::string& path, PciFunction& fn) {
    const std::vector<std::string> parts = Split(fs.RealPath(path), '/');
    for (auto part = parts.rbegin(); part != parts.rend(); ++part)
        if (ParsePciAddress(*part, fn)) return true;
    return false;
}

// Lists a class directory; an absent one means no such hardware.
bool ListIfPresent(const Sysfs& fs, const std::string& dir, std::vector<std::string>& names,
                   SvmDocument& doc) {
    if (!fs.IsDirectory(dir)) return false;
    std::string error;
    if (fs.ListDir(dir, names, error)) return true;
    doc.AddFailure(kPrefix + error);
    return false;
}

// Reads a one-line attribute that must be there; a failure is reported.
bool ReadRequired(const Sysfs& fs, const std::string& path, std::string& value, SvmDocument& doc) {
    std::string error;
    if (fs.ReadLine(path, value, error)) {
        value = CleanText(value);
        return true;
    }
    doc.AddFailure(kPrefix + error);
    return false;
}

// A version text that names no version: empty, or the placeholder a driver
// prints when it could not read one (NVIDIA's "??.??.??.??.??").
bool NamesNoVersion(const std::string& version) {
    return version.find_first_not_of("?. ") == std::string::npos;
}

// An SR-IOV virtual function runs its physical function's firmware; the
// kernel links it to that function as "physfn".
bool IsVirtualFunction(const Sysfs& fs, const PciFunction& fn) {
    return fs.Exists("/sys/bus/pci/devices/" + fn.address + "/physfn");
}

// Network interfaces registered on the function itself (its "net" folder).
bool HasNetworkInterface(const Sysfs& fs, const PciFunction& fn) {
    std::vector<std::string> names;
    std::string ignored;
    return fs.ListDir("/sys/bus/pci/devices/" + fn.address + "/net", names, ignored) && !names.empty();
}

// The UEFI names of an ESRT entry's last_attempt_status.
std::string LastAttemptStatusText(const std::string& status) {
    static const char* const names[] = {
        "success",           "unsuccessful",        "insufficient resources",
        "incorrect version", "invalid format",      "authentication error",
        "AC power event",    "battery power event", "unsatisfied dependencies"};
    char* end = nullptr;
    errno = 0;
    const unsigned long value = std::strtoul(status.c_str(), &end, 10);
    if (status.empty() || *end != '\0' || errno != 0) return "unknown";
    if (value < std::size(names)) return names[value];
    return value >= 0x1000 && value <= 0x4000 ? "vendor-specific error" : "unknown";
}

void CollectEsrt(const Sysfs& fs, SvmDocument& doc) {
    const std::string dir = "/sys/firmware/efi/esrt/entries";
    std::vector<std::string> entries;
    if (!ListIfPresent(fs, dir, entries, doc)) return;
    for (const std::string& entry : entries) {
        const std::string base = dir + "/" + entry;
        std::string fwClass, version, type;
        if (!ReadRequired(fs, base + "/fw_class", fwClass, doc) ||
            !ReadRequired(fs, base + "/fw_version", version, doc) ||
            !ReadRequired(fs, base + "/fw_type", type, doc))
            continue;
        // fw_type: 1 system firmware, 2 device firmware, 3 UEFI driver, 0 unknown.
        const char* const kinds[] = {"Firmware", "System firmware", "Device firmware", "UEFI driver"};
        const unsigned kind = type.size() == 1 && type[0] >= '0' && type[0] <= '3' ? type[0] - '0' : 0;
        NonPciDeviceInfo info;
        info.display = std::string(kinds[kind]) + " " + ToLower(fwClass);
        info.componentID = ToLower(fwClass);
        info.fqdd = "ESRT." + ToLower(fwClass);
        const std::string lowest = CleanText(fs.ReadLineOr(base + "/lowest_supported_fw_version"));
        // A capsule update that failed leaves its status here until the next attempt.
        const std::string status = CleanText(fs.ReadLineOr(base + "/last_attempt_status"));
        if (!status.empty() && status != "0") {
            const std::string attempted = CleanText(fs.ReadLineOr(base + "/last_attempt_version"));
            doc.AddFailure(kPrefix + std::string("ESRT ") + entry + " (" + info.display +
                           "): the last update, to version " + (attempted.empty() ? "?" : attempted) +
                           ", failed with status " + status + " (" + LastAttemptStatusText(status) + ")");
        }
        doc.AddApplication(
            doc.AddNonPciDevice(info),
            {"FRMW", version,
             std::string(kinds[kind]) + (lowest.empty() ? "" : " (lowest supported " + lowest + ")")});
    }
}

void CollectInfiniband(const Sysfs& fs, SvmDocument& doc, std::vector<PciFirmware>& found) {
    const std::string dir = "/sys/class/infiniband";
    std::vector<std::string> names;
    if (!ListIfPresent(fs, dir, names, doc)) return;
    for (const std::string& name : names) {
        PciFirmware fw;
        if (!PciFunctionOf(fs, dir + "/" + name + "/device", fw.pci)) continue;
        // A function with a network interface is nicinv's: ethtool reports its firmware
        // with more detail (the board id, the package version) than fw_ver.
        if (IsVirtualFunction(fs, fw.pci) || HasNetworkInterface(fs, fw.pci)) continue;
        if (!ReadRequired(fs, dir + "/" + name + "/fw_ver", fw.version, doc)) continue;
        if (NamesNoVersion(fw.version)) {
            doc.AddFailure(kPrefix + std::string("RDMA adapter ") + name + " on " + fw.pci.address + ": " +
                           dir + "/" + name + "/fw_ver names no firmware version (\"" + fw.version + "\")");
            continue;
        }
        fw.display = "RDMA adapter " + name;
        found.push_back(fw);
    }
}

void CollectGpus(const Sysfs& fs, SvmDocument& doc, std::vector<PciFirmware>& found) {
    std::vector<std::string> cards;
    if (ListIfPresent(fs, "/sys/class/drm", cards, doc)) {
        for (const std::string& card : cards) {
            // Only the cards themselves ("card0"), not their connectors ("card0-DP-1").
            if (card.compare(0, 4, "card") != 0 || card.find('-') != std::string::npos) continue;
            const std::string attr = "/sys/class/drm/" + card + "/device/vbios_version";
            if (!fs.Exists(attr)) continue;  // a driver that does not publish it
            PciFirmware fw;
            if (!ReadRequired(fs, attr, fw.version, doc) ||
                !PciFunctionOf(fs, "/sys/class/drm/" + card + "/device", fw.pci))
                continue;
            if (NamesNoVersion(fw.version)) {
                doc.AddFailure(kPrefix + std::string("GPU ") + fw.pci.address + ": " + attr +
                               " names no video BIOS version (\"" + fw.version + "\")");
                continue;
            }
            fw.display = "Video BIOS";
            found.push_back(fw);
        }
    }
    // The proprietary driver publishes its GPUs under /proc instead.
    const std::string dir = "/proc/driver/nvidia/gpus";
    std::vector<std::string> gpus;
    if (!ListIfPresent(fs, dir, gpus, doc)) return;
    for (const std::string& gpu : gpus) {
        std::string text, error;
        if (!fs.ReadFile(dir + "/" + gpu + "/information", text, error)) {
            doc.AddFailure(kPrefix + error);
            continue;
        }
        PciFirmware fw;
        for (const std::string& line : Split(text, '\n')) {
            const std::string::size_type colon = line.find(':');
            if (colon == std::string::npos) continue;
            const std::string key = Trim(line.substr(0, colon)), value = CleanText(line.substr(colon + 1));
            if (key == "Video BIOS") fw.version = value;
            if (key == "Bus Location") ParsePciAddress(value, fw.pci);
        }
        if (fw.pci.address.empty() && !ParsePciAddress(gpu, fw.pci)) continue;  // no function to name
        // The driver prints "??.??.??.??.??" when it could not read the video BIOS.
        if (NamesNoVersion(fw.version)) {
            doc.AddFailure(kPrefix + std::string("GPU ") + fw.pci.address + ": " + dir + "/" + gpu +
                           "/information names no video BIOS version (\"" + fw.version + "\")");
            continue;
        }
        fw.display = "Video BIOS";
        found.push_back(fw);
    }
}

void CollectStorageHosts(const Sysfs& fs, SvmDocument& doc, std::vector<PciFirmware>& found) {
    std::vector<HostAdapterFirmware> hosts;
    std::vector<std::string> failures;
    CollectHostAdapterFirmware(fs, hosts, failures);
    for (const std::string& failure : failures) doc.AddFailure(kPrefix + failure);
    for (const HostAdapterFirmware& host : hosts) found.push_back({host.pci, host.version, host.display});
}

void CollectThunderbolt(const Sysfs& fs, SvmDocument& doc) {
    const std::string dir = "/sys/bus/thunderbolt/devices";
    std::vector<std::string> devices;
    if (!ListIfPresent(fs, dir, devices, doc)) return;
    for (const std::string& name : devices) {
        const std::string path = dir + "/" + name + "/nvm_version";
        if (!fs.Exists(path)) continue;  // routers without NVM, domains, retimers without it
        std::string version;
        if (!ReadRequired(fs, path, version, doc)) continue;
        const std::string vendor = CleanText(fs.ReadLineOr(dir + "/" + name + "/vendor_name"));
        const std::string device = CleanText(fs.ReadLineOr(dir + "/" + name + "/device_name"));
        NonPciDeviceInfo info;
        info.display = Trim(vendor + " " + device);
        if (info.display.empty()) info.display = "Thunderbolt controller " + name;
        info.fqdd = "Thunderbolt." + name;
        doc.AddApplication(doc.AddNonPciDevice(info), {"FRMW", version, "Thunderbolt NVM"});
    }
}

// A TPM 1.2 chip: the kernel asks it for its version and shows the answer in
// the chip's "caps" file (also linked from its parent device); kernels before
// the tpm class kept chips under the misc class.
void CollectTpm12(const Sysfs& fs, SvmDocument& doc) {
    for (const char* dir : {"/sys/class/tpm", "/sys/class/misc"}) {
        std::vector<std::string> chips;
        if (!ListIfPresent(fs, dir, chips, doc)) continue;
        bool any = false;
        for (const std::string& chip : chips) {
            if (chip.compare(0, 3, "tpm") != 0 || chip.compare(0, 5, "tpmrm") == 0) continue;
            std::string path;
            for (const char* file : {"/caps", "/device/caps"})
                if (path.empty() && fs.Exists(dir + ("/" + chip) + file)) path = dir + ("/" + chip) + file;
            if (path.empty()) continue;  // a TPM 2.0 chip, or no chip behind the name
            any = true;
            std::string text, error;
            if (!fs.ReadFile(path, text, error)) {
                doc.AddFailure(kPrefix + error);
                continue;
            }
            // The kernel leaves the file empty when the chip does not answer.
            const Tpm12Caps caps = ParseTpm12Caps(text);
            if (caps.firmwareVersion.empty()) {
                doc.AddFailure(kPrefix + path + " shows no firmware version");
                continue;
            }
            NonPciDeviceInfo info;
            info.display = "TPM " + (caps.tcgVersion.empty() ? std::string("1.2") : caps.tcgVersion) +
                           (caps.manufacturer.empty() ? "" : " (" + caps.manufacturer + ")");
            info.fqdd = "TPM." + chip;
            doc.AddApplication(doc.AddNonPciDevice(info), {"FRMW", caps.firmwareVersion, "TPM firmware"});
        }
        if (any) return;
    }
}

void CollectTpm(const Sysfs& fs, SvmDocument& doc, ITpmDevice& tpm) {
    // Only TPM 2.0 chips have the resource manager's device; it lets us share
    // the chip with other users.
    const std::string path = "/dev/tpmrm0";
    if (!fs.Exists(path)) {
        CollectTpm12(fs, doc);
        return;
    }
    std::map<uint32_t, uint32_t> properties;
    uint32_t next = kTpmPtManufacturer;
    // A TPM may hand out fewer properties than asked for: ask again after the last one it gave.
    for (int round = 0; round < 3 && properties.count(kTpmPtFirmwareVersion2) == 0; ++round) {
        std::vector<uint8_t> response;
        std::string error;
        const int rc = tpm.Transact(
            fs.Path(path), GetTpmPropertiesCommand(next, kTpmPtFirmwareVersion2 - next + 1), response, error);
        if (rc == ENOENT) return;  // gone since we looked
        bool more = false;
        if (rc != 0 || !ParseTpmPropertiesResponse(response, properties, more, error)) {
            doc.AddFailure(std::string(kPrefix) +
                           (rc != 0 ? error : "TPM2_GetCapability on " + path + ": " + error));
            return;
        }
        if (!more || properties.empty()) break;
        const uint32_t last = properties.rbegin()->first;
        if (last < next || last >= kTpmPtFirmwareVersion2) break;
        next = last + 1;
    }
    if (properties.count(kTpmPtFirmwareVersion1) == 0 || properties.count(kTpmPtFirmwareVersion2) == 0) {
        doc.AddFailure(std::string(kPrefix) + "TPM2_GetCapability on " + path +
                       ": no firmware version in the answer");
        return;
    }
    const uint32_t manufacturer = properties.count(kTpmPtManufacturer) ? properties[kTpmPtManufacturer] : 0;
    const std::string maker = manufacturer != 0 ? TpmManufacturerText(manufacturer) : "";
    NonPciDeviceInfo info;
    info.display = maker.empty() ? "TPM 2.0" : "TPM 2.0 (" + maker + ")";
    info.fqdd = "TPM.tpm0";
    doc.AddApplication(doc.AddNonPciDevice(info),
                       {"FRMW",
                        FormatTpmFirmwareVersion(manufacturer, properties[kTpmPtFirmwareVersion1],
                                                 properties[kTpmPtFirmwareVersion2]),
                        "TPM firmware"});
}

}  // namespace

void CollectFirmwareInventory(const ModuleOptions& options, SvmDocument& doc, ITpmDevice& tpm) {
    Sysfs fs(options.root);
    CollectEsrt(fs, doc);
    CollectTpm(fs, doc, tpm);
    std::vector<PciFirmware> found;
    CollectInfiniband(fs, doc, found);
    CollectGpus(fs, doc, found);
    CollectStorageHosts(fs, doc, found);
    CollectThunderbolt(fs, doc);

    PciIdDatabase ids;
    std::string error;
    for (PciFirmware& fw : found) {
        if (ReadPciFunction(fs, fw.pci.address, fw.pci, error))
            ids.Want(fw.pci.vendor, fw.pci.deviceId, fw.pci.classCode);
        else
            doc.AddFailure(kPrefix + error);
    }
    if (!found.empty()) ids.Load(fs);
    for (const PciFirmware& fw : found) {
        if (fw.pci.vendor == 0) continue;  // its ids could not be read: reported above
        const PciDeviceInfo info = DescribePciFunction(fw.pci, ids);
        doc.AddApplication(doc.AddPciDevice(info),
                           {"FRMW", fw.version, fw.display.empty() ? info.display : fw.display});
    }
}

}  // namespace svm

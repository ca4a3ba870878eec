#include "HostAdapterFirmware.h"

#include "svm/TextUtil.h"

namespace svm {
namespace {

// The nearest PCI address among the components of the resolved path.
bool PciFunctionOf(const Sysfs& fs, const std::string& path, PciFunction& fn) {
    const std::vector<std::string> parts = Split(fs.RealPath(path), '/');
    for (auto part = parts.rbegin(); part != parts.rend(); ++part)
        if (ParsePciAddress(*part, fn)) return true;
    return false;
}

// A firmware attribute of a scsi_host and the other images its driver
// publishes beside it, named in the display.
struct FirmwareAttribute {
    const char* name;
    struct {
        const char* label;
        const char* name;
    } others[2];
};

// Each driver names its attribute its own way; the first present one counts:
// mpt3sas, mptsas, mptfc and mptspi version_fw, aacraid hba_kernel_version
// ("%d.%d-%d[%d]", the build in brackets; the monitor starts it), qla2xxx
// fw_version, lpfc fwrev, hpsa firmware_revision, smartpqi firmware_version.
const FirmwareAttribute kAttributes[] = {
    {"version_fw", {{"BIOS", "version_bios"}, {nullptr, nullptr}}},
    {"hba_kernel_version", {{"monitor", "hba_monitor_version"}, {"BIOS", "hba_bios_version"}}},
    {"fw_version", {}},
    {"fwrev", {}},
    {"firmware_revision", {}},
    {"firmware_version", {}},
};

}  // namespace

void CollectHostAdapterFirmware(const Sysfs& fs, std::vector<HostAdapterFirmware>& found,
                                std::vector<std::string>& failures) {
    const std::string dir = "/sys/class/scsi_host";
    std::vector<std::string> hosts;
    std::string error;
    if (!fs.IsDirectory(dir)) return;
    if (!fs.ListDir(dir, hosts, error)) {
        failures.push_back(error);
        return;
    }
    for (const std::string& host : hosts) {
        const std::string base = dir + "/" + host + "/";
        const FirmwareAttribute* source = nullptr;
        for (const FirmwareAttribute& attribute : kAttributes)
            if (fs.Exists(base + attribute.name)) {
                source = &attribute;
                break;
            }
        if (source == nullptr) continue;  // a driver that publishes none (megaraid_sas, virtio_scsi, ...)
        HostAdapterFirmware fw;
        if (!fs.ReadLine(base + source->name, fw.version, error)) {
            failures.push_back(error);
            continue;
        }
        fw.version = CleanText(fw.version);
        if (fw.version.empty()) {
            failures.push_back(dir + "/" + host + "/" + source->name + ": empty");
            continue;
        }
        if (!PciFunctionOf(fs, base + "device", fw.pci)) continue;
        const std::string driver = CleanText(fs.ReadLineOr(base + "proc_name"));
        fw.display =
            driver.empty() ? "Storage adapter firmware" : "Storage adapter firmware (" + driver + ")";
        std::string others;
        for (const auto& other : source->others) {
            if (other.name == nullptr) break;
            const std::string value = CleanText(fs.ReadLineOr(base + other.name));
            if (!value.empty()) others += std::string(others.empty() ? "" : ", ") + other.label + " " + value;
        }
        if (!others.empty()) fw.display += ": " + others;
        found.push_back(fw);
    }
}

}  // namespace svm

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
    // Each driver names its attribute its own way: mpt3sas version_fw, qla2xxx
    // fw_version, lpfc fwrev, hpsa firmware_revision, smartpqi and aacraid
    // firmware_version.
    const char* const attributes[] = {"version_fw", "fw_version", "fwrev", "firmware_revision",
                                      "firmware_version"};
    for (const std::string& host : hosts) {
        for (const char* attribute : attributes) {
            const std::string path = dir + "/" + host + "/" + attribute;
            if (!fs.Exists(path)) continue;
            HostAdapterFirmware fw;
            if (!fs.ReadLine(path, fw.version, error)) {
                failures.push_back(error);
                break;
            }
            fw.version = CleanText(fw.version);
            if (PciFunctionOf(fs, dir + "/" + host + "/device", fw.pci)) {
                const std::string driver = CleanText(fs.ReadLineOr(dir + "/" + host + "/proc_name"));
                fw.display =
                    driver.empty() ? "Storage adapter firmware" : "Storage adapter firmware (" + driver + ")";
                found.push_back(fw);
            }
            break;
        }
    }
}

}  // namespace svm

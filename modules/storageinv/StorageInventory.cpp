#include "StorageInventory.h"

#include <ostream>
#include <vector>

#include "NvmeFirmwareLog.h"
#include "svm/PciIdDatabase.h"
#include "svm/TextUtil.h"

namespace svm {
namespace {

bool IsAtaPort(const std::string& part) {
    if (part.size() < 4 || part.compare(0, 3, "ata") != 0) return false;
    return part.find_first_not_of("0123456789", 3) == std::string::npos;
}

// The revision the controller runs now: its active firmware slot, which an
// update changes at once, whereas firmware_rev keeps the revision read at probe
// time until the next reset. firmware_rev is the fallback.
bool NvmeFirmware(const Sysfs& fs, const std::string& name, INvmeAdmin& admin, std::ostream& log,
                  std::string& firmware, std::string& error) {
    std::vector<uint8_t> page;
    std::string why;
    unsigned slot = 0;
    if (admin.GetLogPage(fs.Path("/dev/" + name), kFirmwareSlotLogId, kFirmwareSlotLogSize, page, why) == 0 &&
        ActiveFirmwareRevision(page, slot, firmware, why)) {
        log << "storageinv: " << name << ": firmware " << firmware
            << " from the firmware slot log, active slot " << slot << "\n";
        return true;
    }
    if (!fs.ReadLine("/sys/class/nvme/" + name + "/firmware_rev", firmware, error)) return false;
    firmware = CleanText(firmware);
    log << "storageinv: " << name << ": firmware " << firmware << " from sysfs firmware_rev ("
        << CleanText(why) << ")\n";
    return true;
}

void CollectNvme(const Sysfs& fs, SvmDocument& doc, INvmeAdmin& admin, std::ostream& log) {
    std::vector<std::string> controllers;
    std::string error;
    // No NVMe driver loaded: nothing to report.
    if (!fs.IsDirectory("/sys/class/nvme")) return;
    if (!fs.ListDir("/sys/class/nvme", controllers, error)) {
        doc.AddFailure("Storage inventory: " + error);
        return;
    }
    for (const std::string& name : controllers) {
        const std::string dir = "/sys/class/nvme/" + name;
        std::string model, firmware;
        if (!fs.ReadLine(dir + "/model", model, error) ||
            !NvmeFirmware(fs, name, admin, log, firmware, error)) {
            doc.AddFailure("Storage inventory: " + error);
            continue;
        }
        PciFunction fn;
        std::string fqdd;
        std::string address = fs.ReadLineOr(dir + "/address");
        if (ParsePciAddress(address, fn) || ParsePciAddress(fs.LinkBaseName(dir + "/device"), fn))
            fqdd = "NVMe." + fn.address;
        else
            fqdd = "NVMe." + name;  // fabrics controller: no PCI function of its own
        NonPciDeviceInfo info;
        info.display = model.empty() ? "NVMe controller" : model;
        info.fqdd = fqdd;
        SvmDocument::DeviceRef device = doc.AddNonPciDevice(info);
        if (!firmware.empty()) doc.AddApplication(device, {"FRMW", firmware, info.display});
    }
}

void CollectScsi(const Sysfs& fs, SvmDocument& doc) {
    std::vector<std::string> blocks;
    std::string error;
    if (!fs.ListDir("/sys/class/block", blocks, error)) {
        doc.AddFailure("Storage inventory: " + error);
        return;
    }
    for (const std::string& name : blocks) {
        const std::string dev = "/sys/class/block/" + name + "/device";
        if (fs.Exists("/sys/class/block/" + name + "/partition")) continue;
        if (!fs.Exists(dev + "/model") || !fs.Exists(dev + "/rev")) continue;  // not a SCSI device
        std::string model, rev;
        if (!fs.ReadLine(dev + "/model", model, error) || !fs.ReadLine(dev + "/rev", rev, error)) {
            doc.AddFailure("Storage inventory: " + error);
            continue;
        }
        std::string vendor = fs.ReadLineOr(dev + "/vendor");
        std::string path = fs.RealPath(dev);
        NonPciDeviceInfo info;
        info.display = model.empty() ? "Disk " + name : model;
        if (!vendor.empty() && vendor != "ATA" && !model.empty()) info.display = vendor + " " + model;
        info.fqdd = DiskFqdd(path.empty() ? name : path);
        SvmDocument::DeviceRef device = doc.AddNonPciDevice(info);
        if (!CleanText(rev).empty()) doc.AddApplication(device, {"FRMW", rev, info.display});
    }
}

}  // namespace

std::string DiskFqdd(const std::string& devicePath) {
    std::vector<std::string> parts = Split(devicePath, '/');
    while (!parts.empty() && parts.back().empty()) parts.pop_back();
    std::string hctl = parts.empty() ? devicePath : parts.back();
    std::string pci, ata;
    for (const std::string& part : parts) {
        PciFunction fn;
        if (ParsePciAddress(part, fn) && part.find(':') != std::string::npos &&
            part.find('.') != std::string::npos && Split(part, ':').size() == 3) {
            pci = fn.address;
            ata.clear();  // a port belongs to the innermost adapter
        } else if (IsAtaPort(part)) {
            ata = part.substr(3);
        }
    }
    if (pci.empty()) return "Disk.scsi-" + hctl;
    if (!ata.empty()) return "Disk." + pci + ".ata-" + ata;
    return "Disk." + pci + ".scsi-" + hctl;
}

void CollectStorageInventory(const ModuleOptions& options, SvmDocument& doc, INvmeAdmin& admin,
                             std::ostream& log) {
    Sysfs fs(options.root);
    CollectNvme(fs, doc, admin, log);
    CollectScsi(fs, doc);
}

}  // namespace svm

#include "StorageInventory.h"

#include <cerrno>
#include <cstdio>
#include <ostream>
#include <vector>

#include "MegaraidFirmware.h"
#include "NvmeFirmwareLog.h"
#include "svm/PciIdDatabase.h"
#include "svm/TextUtil.h"

namespace svm {
namespace {

bool IsAtaPort(const std::string& part) {
    if (part.size() < 4 || part.compare(0, 3, "ata") != 0) return false;
    return part.find_first_not_of("0123456789", 3) == std::string::npos;
}

// The revision the controller runs: Identify Controller's FR, asked fresh
// because sysfs firmware_rev keeps the revision read at probe time until the
// next reset. Only live PCIe controllers are asked: one that is resetting or
// dead would hold the command until the kernel gives up on it, and fabrics
// controllers are left alone. note receives a staged update that the next
// reset activates. firmware_rev is the fallback; a controller that did not
// answer in time is also a failure.
bool NvmeFirmware(const Sysfs& fs, const std::string& name, INvmeAdmin& admin, SvmDocument& doc,
                  std::ostream& log, std::string& firmware, std::string& note, std::string& error) {
    const std::string dir = "/sys/class/nvme/" + name;
    const std::string transport = Trim(fs.ReadLineOr(dir + "/transport"));
    const std::string state = Trim(fs.ReadLineOr(dir + "/state"));
    const std::string device = fs.Path("/dev/" + name);
    std::string why;
    if (transport != "pcie") {
        why = transport.empty() ? "no transport attribute" : "transport " + transport;
    } else if (state != "live") {
        why = "state " + (state.empty() ? std::string("unknown") : state);
    } else {
        std::vector<uint8_t> data;
        const int rc = admin.Send(device, IdentifyControllerCommand(), kNvmeAdminTimeoutMs, data, why);
        if (rc == ETIMEDOUT) doc.AddFailure("Storage inventory: " + name + ": " + why);
        if (rc == 0 && IdentifyFirmwareRevision(data, firmware, why)) {
            FirmwareSlots slots;
            std::string slotWhy;
            const bool slotLog =
                admin.Send(device, FirmwareSlotLogCommand(), kNvmeAdminTimeoutMs, data, slotWhy) == 0 &&
                ParseFirmwareSlotLog(data, slots, slotWhy);
            if (slotLog && slots.next != 0 && slots.next != slots.active) {
                const std::string& staged = slots.revisions[slots.next];
                note = "firmware " + (staged.empty() ? std::string() : staged + " ") + "in slot " +
                       std::to_string(slots.next) + " becomes active at the next reset";
            }
            log << "storageinv: " << name << ": firmware " << firmware << " from Identify Controller"
                << (note.empty() ? "" : "; " + note) << (slotLog ? "" : " (" + CleanText(slotWhy) + ")")
                << "\n";
            return true;
        }
    }
    if (!fs.ReadLine(dir + "/firmware_rev", firmware, error)) return false;
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
        std::string model, firmware, note;
        if (!fs.ReadLine(dir + "/model", model, error) ||
            !NvmeFirmware(fs, name, admin, doc, log, firmware, note, error)) {
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
        if (!firmware.empty())
            doc.AddApplication(device, {"FRMW", firmware, info.display + (note.empty() ? "" : "; " + note)});
    }
}

// Where each RAID driver puts the logical drives it exposes: the SCSI channels
// of its volumes. Physical disks the driver passes through (JBOD, HBA mode)
// are on its other channels.
const struct {
    const char* driver;
    unsigned first, last;
} kVolumeChannels[] = {
    {"megaraid_sas", 2, 3},  // physical disks on 0 and 1
    {"aacraid", 0, 0},       // containers; physical devices from 1
    {"mpt3sas", 1, 1},       // integrated RAID volumes; NVMe devices on 2
    {"mpt2sas", 1, 1},       // as mpt3sas
    {"mptsas", 1, 1},        // integrated RAID volumes
};

// Why the SCSI device hctl (dev: its sysfs directory) is a RAID logical
// volume, or empty when it is not. hpsa and smartpqi tell by raid_level,
// "N/A" for a physical disk; myrb and myrs say "Physical Drive".
std::string LogicalVolume(const Sysfs& fs, const std::string& dev, const std::string& hctl) {
    unsigned host = 0, channel = 0;
    if (std::sscanf(hctl.c_str(), "%u:%u:", &host, &channel) != 2) return "";
    const std::string driver =
        Trim(fs.ReadLineOr("/sys/class/scsi_host/host" + std::to_string(host) + "/proc_name"));
    for (const auto& rule : kVolumeChannels)
        if (driver == rule.driver && channel >= rule.first && channel <= rule.last)
            return driver + " channel " + std::to_string(channel);
    const std::string level = Trim(fs.ReadLineOr(dev + "/raid_level"));
    if (!level.empty() && level != "N/A" && level != "Physical Drive")
        return (driver.empty() ? std::string("raid_level ") : driver + " raid_level ") + level;
    return "";
}

void CollectScsi(const Sysfs& fs, SvmDocument& doc, std::ostream& log) {
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
        const std::string hctl = path.substr(path.rfind('/') + 1);
        const std::string volume = LogicalVolume(fs, dev, hctl);
        if (!volume.empty()) {
            // Its revision is the controller's, which the controller's own record carries.
            log << "storageinv: " << name << ": " << hctl << " is a logical volume (" << volume
                << "), not a disk\n";
            continue;
        }
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
                             IMfiDevice& mfi, std::ostream& log) {
    Sysfs fs(options.root);
    CollectNvme(fs, doc, admin, log);
    CollectMegaraidFirmware(fs, doc, mfi, log);
    CollectScsi(fs, doc, log);
}

}  // namespace svm

#ifndef SVM_STORAGEINVENTORY_H
#define SVM_STORAGEINVENTORY_H

#include <iosfwd>
#include <string>

#include "IMfiDevice.h"
#include "INvmeAdmin.h"
#include "svm/ModuleMain.h"
#include "svm/SvmDocument.h"

namespace svm {

// Stable identifier of a SCSI-attached disk from the resolved sysfs path of
// its device: "Disk.<pci address>.ata-<port>" for ATA ports,
// "Disk.<pci address>.scsi-<h:c:t:l>" for other adapters, "Disk.scsi-<h:c:t:l>"
// when no PCI adapter is on the path.
std::string DiskFqdd(const std::string& devicePath);

// Adds an "FRMW" non-PCI "Device" for every NVMe controller under
// /sys/class/nvme (identifier "NVMe.<pci address>") and every SCSI, SATA or
// SAS device under /sys/class/block whose device has a model and a revision
// (identifier from DiskFqdd), except RAID logical volumes, and the firmware of
// megaraid_sas controllers on their PCI devices (CollectMegaraidFirmware,
// through mfi). An NVMe controller's firmware is Identify Controller's
// firmware revision, asked through admin on /dev/<controller> below the root
// when the controller is a live PCIe one, with a staged update from the
// firmware slot log in the display; otherwise, or when that fails, sysfs
// firmware_rev. One line on log per controller says which source gave its
// revision, and one per logical volume left out.
void CollectStorageInventory(const ModuleOptions& options, SvmDocument& doc, INvmeAdmin& admin,
                             IMfiDevice& mfi, std::ostream& log);

}  // namespace svm

#endif

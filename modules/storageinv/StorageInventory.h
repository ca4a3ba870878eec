#ifndef SVM_STORAGEINVENTORY_H
#define SVM_STORAGEINVENTORY_H

#include <iosfwd>
#include <string>

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
// (identifier from DiskFqdd). An NVMe controller's firmware is the revision in
// its active slot, read from the firmware slot log through admin on
// /dev/<controller> below the root; when that fails, sysfs firmware_rev. One
// line on log per controller says which source gave its revision.
void CollectStorageInventory(const ModuleOptions& options, SvmDocument& doc, INvmeAdmin& admin,
                             std::ostream& log);

}  // namespace svm

#endif

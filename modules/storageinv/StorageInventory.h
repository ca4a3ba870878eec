#ifndef SVM_STORAGEINVENTORY_H
#define SVM_STORAGEINVENTORY_H

#include <string>

#include "svm/ModuleMain.h"
#include "svm/SvmDocument.h"

namespace svm {

// Stable identifier of a SCSI-attached disk from the resolved sysfs path of
// its device: "Disk.<pci address>.ata-<port>" for ATA ports,
// "Disk.<pci address>.scsi-<h:c:t:l>" for other adapters, "Disk.scsi-<h:c:t:l>"
// when no PCI adapter is on the path.
std::string DiskFqdd(const std::string& devicePath);

// Adds an "FRMW" non-PCI "Device" for every NVMe controller under
// /sys/class/nvme (model, firmware_rev; identifier "NVMe.<pci address>") and
// every SCSI, SATA or SAS device under /sys/class/block whose device has a
// model and a revision (identifier from DiskFqdd).
void CollectStorageInventory(const ModuleOptions& options, SvmDocument& doc);

}  // namespace svm

#endif

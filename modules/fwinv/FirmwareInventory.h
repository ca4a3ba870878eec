#ifndef SVM_FIRMWAREINVENTORY_H
#define SVM_FIRMWAREINVENTORY_H

#include "ITpmDevice.h"
#include "svm/ModuleMain.h"
#include "svm/SvmDocument.h"

namespace svm {

// Firmware the other modules do not see: what the platform declares for
// capsule updates (UEFI ESRT), InfiniBand/RDMA adapters, GPUs (video BIOS),
// SAS, RAID and Fibre Channel host adapters, Thunderbolt controllers, and the
// TPM (a TPM 2.0 by TPM2_GetCapability through tpm on /dev/tpmrm0 below the
// root, else a TPM 1.2 by its sysfs caps file). A source that is not there is
// skipped; one that cannot be read, or that names no version, is a failure
// naming the path and the reason. RDMA devices on SR-IOV virtual functions or
// on functions with a network interface are left out: nicinv reports those.
void CollectFirmwareInventory(const ModuleOptions& options, SvmDocument& doc, ITpmDevice& tpm);

}  // namespace svm

#endif

#ifndef SVM_FIRMWAREINVENTORY_H
#define SVM_FIRMWAREINVENTORY_H

#include "svm/ModuleMain.h"
#include "svm/SvmDocument.h"

namespace svm {

// Firmware the other modules do not see: what the platform declares for
// capsule updates (UEFI ESRT), InfiniBand/RDMA adapters, GPUs (video BIOS),
// SAS, RAID and Fibre Channel host adapters, and Thunderbolt controllers. A
// source that is not there is skipped; one that cannot be read is a failure
// naming the path and the reason.
void CollectFirmwareInventory(const ModuleOptions& options, SvmDocument& doc);

}  // namespace svm

#endif

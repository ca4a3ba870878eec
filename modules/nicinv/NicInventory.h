#ifndef SVM_NICINVENTORY_H
#define SVM_NICINVENTORY_H

#include "IEthtool.h"
#include "svm/ModuleMain.h"
#include "svm/SvmDocument.h"

namespace svm {

// Adds the firmware of every network adapter: for each interface under
// /sys/class/net that has a "device" link (virtual interfaces have none), asks
// the driver (ETHTOOL_GDRVINFO) and, when it reports a firmware version,
// writes an "FRMW" "Application" on the PCI "Device" named by its bus address,
// or on a non-PCI "Device" for adapters on other buses. Interfaces sharing one
// PCI function are reported once; SR-IOV virtual functions not at all. An
// RDMA device on a function with an interface is left to this module (fwinv
// skips it), so the function gets one firmware version. Drivers are left to
// the PCI module, so the two never report different driver versions for one
// function.
void CollectNicInventory(const ModuleOptions& options, SvmDocument& doc, IEthtool& ethtool);

}  // namespace svm

#endif

#ifndef SVM_MEGARAIDFIRMWARE_H
#define SVM_MEGARAIDFIRMWARE_H

#include <iosfwd>

#include "IMfiDevice.h"
#include "svm/SvmDocument.h"
#include "svm/Sysfs.h"

namespace svm {

// Each megaraid_sas controller answers its time limit, in milliseconds.
const unsigned kMfiTimeoutMs = 5000;

// Adds the firmware of every megaraid_sas controller (a host under
// /sys/class/scsi_host whose proc_name is "megaraid_sas") to its PCI device:
// the package version from the controller information (MR_DCMD_CTRL_GET_INFO
// through mfi), with the product name and the image components in the display
// and those waiting for a reset after them. The management node is
// /dev/megaraid_sas_ioctl_node below the root; where it is missing, a private
// node for the major of "megaraid_sas_ioctl" in /proc/devices, made once and
// removed before returning. A controller that cannot be asked, does not
// answer in time, answers with an MFI status other than 0 or names no version
// is a failure naming its host and PCI address. One line on log per
// controller.
void CollectMegaraidFirmware(const Sysfs& fs, SvmDocument& doc, IMfiDevice& mfi, std::ostream& log);

}  // namespace svm

#endif

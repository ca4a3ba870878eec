#ifndef SVM_HOSTADAPTERFIRMWARE_H
#define SVM_HOSTADAPTERFIRMWARE_H

#include <string>
#include <vector>

#include "svm/PciIdDatabase.h"
#include "svm/Sysfs.h"

namespace svm {

// The firmware a SCSI host adapter's driver publishes in sysfs.
struct HostAdapterFirmware {
    PciFunction pci;  // the function the host sits on; only its address is set
    std::string version;
    std::string display;  // of the application
};

// One entry for every host under /sys/class/scsi_host whose driver publishes
// a firmware attribute and that sits on a PCI function. An attribute that is
// there but cannot be read adds a failure naming its path; no
// /sys/class/scsi_host means no SCSI hosts.
void CollectHostAdapterFirmware(const Sysfs& fs, std::vector<HostAdapterFirmware>& found,
                                std::vector<std::string>& failures);

}  // namespace svm

#endif

#ifndef SVM_PCIINVENTORY_H
#define SVM_PCIINVENTORY_H

#include <string>

#include "svm/ModuleMain.h"
#include "svm/SvmDocument.h"
#include "svm/Sysfs.h"

namespace svm {

// Kernel release of the inventoried system: <root>/proc/sys/kernel/osrelease,
// else uname(2) when the root is "/"; empty when unknown.
std::string KernelRelease(const Sysfs& fs);

// What is known about the driver bound to a PCI function.
struct DriverVersion {
    std::string driver;   // bound driver name, empty when unbound
    std::string module;   // kernel module that provides it
    std::string version;  // empty when it cannot be told truthfully
    std::string source;   // "module" (its version file), "kernel" (in-tree or built-in)
};

// The bound driver of /sys/bus/pci/devices/<address> and its version: the
// module's "version" file when it has one, else the kernel release for
// built-in drivers and in-tree modules; an out-of-tree module (taint "O")
// without a version file gets no version.
DriverVersion ReadDriverVersion(const Sysfs& fs, const std::string& address,
                                const std::string& kernelRelease);

// Adds one PCI "Device" per function under /sys/bus/pci/devices, with a
// "DRVR" "Application" for its bound driver when the driver's version is
// known. Functions without a driver (or without a known version) are listed
// without an "Application", so the collector does not record them.
void CollectPciInventory(const ModuleOptions& options, SvmDocument& doc);

}  // namespace svm

#endif

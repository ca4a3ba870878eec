#ifndef SVM_BIOSINVENTORY_H
#define SVM_BIOSINVENTORY_H

#include <string>
#include <vector>

#include "svm/ModuleMain.h"
#include "svm/SvmDocument.h"
#include "svm/Sysfs.h"

namespace svm {

// True for the placeholder texts firmware leaves in unset SMBIOS strings
// ("To Be Filled By O.E.M.", "Default string", "System SKU#", ...).
bool IsPlaceholder(const std::string& value);

// The system identifier: the SMBIOS product SKU, else the product name,
// from /sys/class/dmi/id, skipping placeholders. It names the model of the
// machine, not the unit, so it is the same on every machine of one model.
// Empty when neither is readable.
std::string ReadSystemId(const Sysfs& fs);

// Microcode revision of each processor socket, from /proc/cpuinfo.
struct SocketMicrocode {
    std::string socket;  // "physical id", "0" when the file has none
    std::string model;   // "model name"
    std::string revision;
};

// Parses the text of /proc/cpuinfo; one entry per socket, in order of first
// appearance. Processors without a "microcode" line are left out.
std::vector<SocketMicrocode> ParseMicrocode(const std::string& cpuinfo);

// Adds the BIOS as a non-PCI "Device" with componentID "159" and a "BIOS"
// "Application" (bios_version), the "System" element, and one "FRMW" device
// per processor socket for its microcode revision.
void CollectBiosInventory(const ModuleOptions& options, SvmDocument& doc);

}  // namespace svm

#endif

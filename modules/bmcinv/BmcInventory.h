#ifndef SVM_BMCINVENTORY_H
#define SVM_BMCINVENTORY_H

#include <cstdint>
#include <string>
#include <vector>

#include "IBmcTransport.h"
#include "svm/ModuleMain.h"
#include "svm/SvmDocument.h"
#include "svm/Sysfs.h"

namespace svm {

// True when the system shows an IPMI interface: a device node ("/dev/ipmi0",
// "/dev/ipmi/0", "/dev/ipmidev/0") or an SMBIOS IPMI device record
// (/sys/firmware/dmi/entries/38-0). Without either, no request is tried: the
// library would spend seconds retrying to open a device that is not there.
bool HasIpmiInterface(const Sysfs& fs);

// Firmware revision from a Get Device ID answer (completion code, then data):
// data byte 2 bits 0-6 major, data byte 3 minor in BCD, as "major.minor"
// with two minor digits ("3.30"). False with error for a failed or short
// answer or a minor byte that is not BCD.
bool DecodeFirmwareRevision(const std::vector<uint8_t>& response, std::string& revision, std::string& error);

// Adds the management controller as a non-PCI "Device" ("BMC.Embedded.1")
// with an "FRMW" "Application", or an "SPStatus" failure when there is no IPMI
// interface or the request fails.
void CollectBmcInventory(const ModuleOptions& options, SvmDocument& doc, IBmcTransport& transport);

}  // namespace svm

#endif

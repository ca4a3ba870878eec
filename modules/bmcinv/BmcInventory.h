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

// What a Get Device ID answer (completion code, then data) tells.
struct BmcDeviceId {
    // Data byte 2 bits 0-6 major, data byte 3 minor, as "major.minor" with two
    // minor digits ("3.30"). The minor byte is BCD by the IPMI standard;
    // a controller that writes it in binary gets its two hex digits ("1.1a").
    std::string revision;
    bool minorIsBcd = true;
    // Data bytes 7-9 (IANA enterprise number) and 10-11 (product id), least
    // significant byte first; only when the answer holds them.
    bool hasIds = false;
    uint32_t manufacturer = 0;
    uint16_t product = 0;
};

// Decodes a Get Device ID answer. False with error for a failed completion
// code or an answer too short for the firmware revision.
bool DecodeDeviceId(const std::vector<uint8_t>& response, BmcDeviceId& id, std::string& error);

// The failure text of a request the IPMI library could not make:
// "IPMI request (netfn 0x06, cmd 0x01) failed with status 320".
std::string IpmiRequestFailure(uint8_t netfn, uint8_t cmd, int status);

// Adds the management controller as a non-PCI "Device" ("BMC.Embedded.1",
// displayed with its manufacturer and product id) with an "FRMW"
// "Application", or an "SPStatus" failure when there is no IPMI interface or
// the request fails.
void CollectBmcInventory(const ModuleOptions& options, SvmDocument& doc, IBmcTransport& transport);

}  // namespace svm

#endif

#include "BmcInventory.h"

#include <cstdio>

namespace svm {

bool HasIpmiInterface(const Sysfs& fs) {
    for (const char* path : {"/dev/ipmi0", "/dev/ipmi/0", "/dev/ipmidev/0", "/sys/firmware/dmi/entries/38-0"})
        if (fs.Exists(path)) return true;
    return false;
}

bool DecodeFirmwareRevision(const std::vector<uint8_t>& response, std::string& revision, std::string& error) {
    if (response.empty()) {
        error = "empty Get Device ID answer";
        return false;
    }
    if (response[0] != 0) {
        char buffer[64];
        std::snprintf(buffer, sizeof buffer, "Get Device ID failed with completion code 0x%02x", response[0]);
        error = buffer;
        return false;
    }
    if (response.size() < 5) {
        error = "Get Device ID answer too short (" + std::to_string(response.size() - 1) + " data bytes)";
        return false;
    }
    unsigned major = response[3] & 0x7f;
    unsigned minor = response[4];
    if ((minor >> 4) > 9 || (minor & 0x0f) > 9) {
        char buffer[64];
        std::snprintf(buffer, sizeof buffer, "firmware minor revision 0x%02x is not BCD", minor);
        error = buffer;
        return false;
    }
    char buffer[16];
    std::snprintf(buffer, sizeof buffer, "%u.%02x", major, minor);
    revision = buffer;
    return true;
}

void CollectBmcInventory(const ModuleOptions& options, SvmDocument& doc, IBmcTransport& transport) {
    Sysfs fs(options.root);
    if (!HasIpmiInterface(fs)) {
        doc.AddFailure(
            "Management controller inventory: no IPMI device (no /dev/ipmi0, /dev/ipmi/0 or /dev/ipmidev/0 "
            "and no SMBIOS IPMI device record)");
        return;
    }
    std::vector<uint8_t> response;
    std::string error, revision;
    if (!transport.Request(0x06, 0x01, {}, response, error) ||
        !DecodeFirmwareRevision(response, revision, error)) {
        doc.AddFailure("Management controller inventory: " + error);
        return;
    }
    NonPciDeviceInfo info;
    info.display = "Management controller";
    info.fqdd = "BMC.Embedded.1";
    doc.AddApplication(doc.AddNonPciDevice(info), {"FRMW", revision, "Management controller firmware"});
}

}  // namespace svm

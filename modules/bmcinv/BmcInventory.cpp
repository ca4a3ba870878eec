#include "BmcInventory.h"

#include <cstdio>

namespace svm {

bool HasIpmiInterface(const Sysfs& fs) {
    for (const char* path : {"/dev/ipmi0", "/dev/ipmi/0", "/dev/ipmidev/0", "/sys/firmware/dmi/entries/38-0"})
        if (fs.Exists(path)) return true;
    return false;
}

bool DecodeDeviceId(const std::vector<uint8_t>& response, BmcDeviceId& id, std::string& error) {
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
    const unsigned major = response[3] & 0x7f, minor = response[4];
    id = BmcDeviceId();
    id.minorIsBcd = (minor >> 4) <= 9 && (minor & 0x0f) <= 9;
    // The same two digits either way: BCD digits are hex digits.
    char buffer[16];
    std::snprintf(buffer, sizeof buffer, "%u.%02x", major, minor);
    id.revision = buffer;
    if (response.size() >= 12) {
        id.hasIds = true;
        id.manufacturer = (response[7] | response[8] << 8 | response[9] << 16) & 0x0fffff;
        id.product = static_cast<uint16_t>(response[10] | response[11] << 8);
    }
    return true;
}

std::string IpmiRequestFailure(uint8_t netfn, uint8_t cmd, int status) {
    char buffer[96];
    std::snprintf(buffer, sizeof buffer, "IPMI request (netfn 0x%02x, cmd 0x%02x) failed with status %d",
                  netfn, cmd, status);
    return buffer;
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
    std::string error;
    BmcDeviceId id;
    if (!transport.Request(0x06, 0x01, {}, response, error) || !DecodeDeviceId(response, id, error)) {
        doc.AddFailure("Management controller inventory: " + error);
        return;
    }
    NonPciDeviceInfo info;
    info.display = "Management controller";
    if (id.hasIds) {
        char ids[64];
        std::snprintf(ids, sizeof ids, " (manufacturer IANA %u, product 0x%04x)", id.manufacturer,
                      id.product);
        info.display += ids;
    }
    info.fqdd = "BMC.Embedded.1";
    std::string display = "Management controller firmware";
    if (!id.minorIsBcd)
        display += " (minor revision 0x" + id.revision.substr(id.revision.find('.') + 1) +
                   " is not BCD: shown in hex)";
    doc.AddApplication(doc.AddNonPciDevice(info), {"FRMW", id.revision, display});
}

}  // namespace svm

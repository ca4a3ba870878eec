#include "DatamodelTestSupport.h"

#include <cstdio>
#include <cstring>
#include <fstream>
#include <sstream>

FakeShmApi& TestShm() {
    static FakeShmApi fake;
    return fake;
}

namespace {
const bool kFakeInstalled = (QVRSetShmApi(&TestShm()), true);

long StatusKb(const char* field) {
    std::ifstream status("/proc/self/status");
    std::string line;
    const size_t length = std::strlen(field);
    while (std::getline(status, line))
        if (line.compare(0, length, field) == 0) return std::atol(line.c_str() + length + 1);
    return -1;
}
}  // namespace

std::string Inventory(const std::string& body) {
    (void)kFakeInstalled;
    return "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<SVMInventory lang=\"en\">\n" + body +
           "</SVMInventory>\n";
}

std::string PciDevice(const std::string& componentID, const std::string& version,
                      const std::string& componentType, const std::string& bus, const std::string& display) {
    return "  <Device componentID=\"" + componentID + "\" display=\"" + display +
           "\" vendorID=\"8086\" deviceID=\"1521\" subVendorID=\"1028\" subDeviceID=\"1f60\" bus=\"" + bus +
           "\" device=\"0\" function=\"1\" enum=\"e1\">\n    <Application componentType=\"" + componentType +
           "\" version=\"" + version + "\" display=\"" + display + " firmware\"/>\n  </Device>\n";
}

std::string NonPciDevice(const std::string& componentID, const std::string& version, const std::string& fqdd,
                         const std::string& componentType, const std::string& display) {
    return "  <Device componentID=\"" + componentID + "\" display=\"" + display + "\" enum=\"e2\" FQDD=\"" +
           fqdd + "\">\n    <Application componentType=\"" + componentType + "\" version=\"" + version +
           "\" display=\"" + display + " app\"/>\n  </Device>\n";
}

std::string OperatingSystem(const std::string& name, const std::string& major) {
    return "  <OperatingSystem osVendor=\"Debian\" osArch=\"x64\" majorVersion=\"" + major +
           "\" minorVersion=\"0\" spMajorVersion=\"0\" spMinorVersion=\"0\" name=\"" + name +
           "\" buildNumber=\"1\" osCode=\"LIN\"/>\n";
}

std::string ManyDevices(size_t count, size_t unique) {
    std::string body;
    body.reserve(count * 300);
    for (size_t i = 0; i < count; ++i) {
        const size_t id = unique == 0 ? i : i % unique;
        char bus[16];
        std::snprintf(bus, sizeof bus, "%zx", id % 256);
        body += PciDevice(std::to_string(10000 + id), "1." + std::to_string(id / 256), "FRMW", bus,
                          "Device number " + std::to_string(id));
    }
    return Inventory(body);
}

long PeakRssBytes() { return StatusKb("VmHWM:") * 1024; }
long CurrentRssBytes() { return StatusKb("VmRSS:") * 1024; }

bool ResetPeakRss() {
    std::ofstream clear("/proc/self/clear_refs");
    if (!clear) return false;
    clear << "5";
    clear.flush();
    return static_cast<bool>(clear);
}

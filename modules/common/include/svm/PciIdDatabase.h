#ifndef SVM_PCIIDDATABASE_H
#define SVM_PCIIDDATABASE_H

#include <cstdint>
#include <map>
#include <set>
#include <string>
#include <utility>

#include "svm/SvmDocument.h"
#include "svm/Sysfs.h"

namespace svm {

// Names from the PCI id database ("pci.ids") for a known set of ids. Only the
// vendor, device and class lines asked for are kept; the file is scanned once.
class PciIdDatabase {
public:
    // Registers the ids a later Load must resolve.
    void Want(uint16_t vendor, uint16_t device, uint32_t classCode);

    // Scans the first of /usr/share/misc/pci.ids and /usr/share/hwdata/pci.ids
    // that exists under the root. False when neither is readable (the built-in
    // class names still answer ClassName).
    bool Load(const Sysfs& fs);

    // Scans one file; false when it cannot be read.
    bool LoadFile(const std::string& path);

    const std::string& LoadedFrom() const { return m_loadedFrom; }

    std::string VendorName(uint16_t vendor) const;
    std::string DeviceName(uint16_t vendor, uint16_t device) const;

    // Sub-class name for the 24-bit class code, else the base class name,
    // from the database when loaded, else from a built-in table; empty when
    // unknown.
    std::string ClassName(uint32_t classCode) const;

    // "<vendor> <device>" when the device is known, else the class name, else
    // "PCI device vvvv:dddd".
    std::string DisplayName(uint16_t vendor, uint16_t device, uint32_t classCode) const;

private:
    void Scan(const char* data, size_t size);

    std::set<uint16_t> m_wantVendors;
    std::set<std::pair<uint16_t, uint16_t>> m_wantDevices;
    std::set<uint8_t> m_wantClasses;
    std::map<uint16_t, std::string> m_vendors;
    std::map<std::pair<uint16_t, uint16_t>, std::string> m_devices;
    std::map<uint8_t, std::string> m_classes;
    std::map<uint16_t, std::string> m_subclasses;  // (base << 8) | sub
    std::string m_loadedFrom;
};

// One function under /sys/bus/pci/devices.
struct PciFunction {
    std::string address;  // "0000:3b:00.0"
    unsigned domain = 0, bus = 0, device = 0, function = 0;
    uint16_t vendor = 0, deviceId = 0, subVendor = 0, subDevice = 0;
    uint32_t classCode = 0;
};

// Parses "dddd:bb:dd.f" (the domain may be omitted); false when malformed.
bool ParsePciAddress(const std::string& text, PciFunction& out);

// Reads the ids of the function at /sys/bus/pci/devices/<address>. A missing
// subsystem id reads as 0; a missing vendor or device id is an error.
bool ReadPciFunction(const Sysfs& fs, const std::string& address, PciFunction& out, std::string& error);

// The "Device" attributes of a function: its ids, its name from the database
// and its address.
PciDeviceInfo DescribePciFunction(const PciFunction& fn, const PciIdDatabase& ids);

}  // namespace svm

#endif

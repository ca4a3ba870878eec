#ifndef DATAMODELTESTSUPPORT_H
#define DATAMODELTESTSUPPORT_H

#include <string>
#include <vector>

#include "CDeviceInfo.h"

// Owns the records a test receives.
struct Records {
    std::vector<CDeviceInfo*> items;
    ~Records() {
        for (CDeviceInfo* r : items) delete r;
    }
    size_t size() const { return items.size(); }
    const CDeviceInfo& operator[](size_t i) const { return *items[i]; }
};

// Module output documents and elements.
inline std::string Inventory(const std::string& body) {
    return "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<SVMInventory lang=\"en\">\n" + body +
           "</SVMInventory>\n";
}

inline std::string PciDevice(const std::string& componentID, const std::string& version,
                             const std::string& componentType = "FRMW", const std::string& display = "NIC") {
    return "<Device componentID=\"" + componentID + "\" display=\"" + display +
           "\" vendorID=\"8086\" deviceID=\"1521\" subVendorID=\"1028\" subDeviceID=\"1f60\" bus=\"3b\" "
           "device=\"0\" function=\"1\" enum=\"e1\"><Application componentType=\"" +
           componentType + "\" version=\"" + version + "\" display=\"" + display + " firmware\"/></Device>\n";
}

inline std::string NonPciDevice(const std::string& componentID, const std::string& version,
                                const std::string& fqdd, const std::string& componentType = "FRMW") {
    return "<Device componentID=\"" + componentID + "\" display=\"Disk\" enum=\"e2\" FQDD=\"" + fqdd +
           "\"><Application componentType=\"" + componentType + "\" version=\"" + version +
           "\" display=\"Disk app\"/></Device>\n";
}

inline std::string OperatingSystem(const std::string& name, const std::string& major) {
    return "<OperatingSystem osVendor=\"Debian\" osArch=\"x64\" majorVersion=\"" + major +
           "\" minorVersion=\"0\" spMajorVersion=\"1\" spMinorVersion=\"2\" name=\"" + name +
           "\" buildNumber=\"3\" osCode=\"LIN\"/>\n";
}

#endif

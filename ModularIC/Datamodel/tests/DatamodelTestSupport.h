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
std::string Inventory(const std::string& body);
std::string PciDevice(const std::string& componentID, const std::string& version,
                      const std::string& componentType = "FRMW", const std::string& display = "NIC");
std::string NonPciDevice(const std::string& componentID, const std::string& version, const std::string& fqdd,
                         const std::string& componentType = "FRMW");
std::string OperatingSystem(const std::string& name, const std::string& major);

#endif

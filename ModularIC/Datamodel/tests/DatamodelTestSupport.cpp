#include "DatamodelTestSupport.h"

std::string Inventory(const std::string& body) {
    return "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<SVMInventory lang=\"en\">\n" + body +
           "</SVMInventory>\n";
}

std::string PciDevice(const std::string& componentID, const std::string& version,
                      const std::string& componentType, const std::string& display) {
    return "<Device componentID=\"" + componentID + "\" display=\"" + display +
           "\" vendorID=\"8086\" deviceID=\"1521\" subVendorID=\"1028\" subDeviceID=\"1f60\" bus=\"3b\" "
           "device=\"0\" "
           "function=\"1\" enum=\"e1\"><Application componentType=\"" +
           componentType + "\" version=\"" + version + "\" display=\"" + display + " firmware\"/></Device>\n";
}

std::string NonPciDevice(const std::string& componentID, const std::string& version, const std::string& fqdd,
                         const std::string& componentType) {
    return "<Device componentID=\"" + componentID + "\" display=\"Disk\" enum=\"e2\" FQDD=\"" + fqdd +
           "\"><Application componentType=\"" + componentType + "\" version=\"" + version +
           "\" display=\"Disk app\"/></Device>\n";
}

std::string OperatingSystem(const std::string& name, const std::string& major) {
    return "<OperatingSystem osVendor=\"Debian\" osArch=\"x64\" majorVersion=\"" + major +
           "\" minorVersion=\"0\" spMajorVersion=\"1\" spMinorVersion=\"2\" name=\"" + name +
           "\" buildNumber=\"3\" osCode=\"LIN\"/>\n";
}

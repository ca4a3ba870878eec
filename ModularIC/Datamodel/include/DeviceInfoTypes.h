#ifndef DEVICEINFOTYPES_H
#define DEVICEINFOTYPES_H

#include <string>

// Device types of a record.
enum eDeviceType { QVR_DEVICE_UNKNOWN = 0, QVR_DEVICE_PCI = 1, QVR_DEVICE_NONPCI = 2 };

// Kinds of dependency a record describes; only the first is used.
enum eDependencyType { QVR_DEPENDENCY_NONE = 0, QVR_DEPENDENCY_DEVICE = 1 };

// Record status values.
#define QVR_STATUS_UNSET (-1)
#define QVR_STATUS_SUCCESS 0
#define QVR_STATUS_FAILURE 1

// PCI identifiers of a device, as the module wrote them.
struct SPCIInfo {
    std::string componentID;
    std::string deviceID;
    std::string subDeviceID;
    std::string vendorID;
    std::string subVendorID;
    std::string display;
};

// PCI address.
struct _BDFInfo {
    unsigned char bus = 0;
    unsigned char device = 0;
    unsigned char function = 0;
};

// One operating-system entry.
struct SOSInfo {
    std::string osVendor;
    std::string osArch;
    std::string majorVersion;
    std::string minorVersion;
    std::string spMajorVersion;
    std::string spMinorVersion;
    std::string name;
    std::string buildNumber;
    std::string osCode;
};

#endif

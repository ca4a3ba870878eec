#ifndef SVM_SVMDOCUMENT_H
#define SVM_SVMDOCUMENT_H

#include <cstdio>
#include <string>

struct _xmlDoc;
struct _xmlNode;

namespace svm {

// Attributes of a PCI "Device" element. Identifiers are 4-digit lower-case
// hexadecimal text; bus, device and function are written as lower-case hex.
struct PciDeviceInfo {
    std::string vendorID;
    std::string deviceID;
    std::string subVendorID;
    std::string subDeviceID;
    std::string componentID;  // written only when not empty
    std::string display;
    std::string enumId;  // written only when not empty
    unsigned bus = 0;
    unsigned device = 0;
    unsigned function = 0;
};

// Attributes of a non-PCI "Device" element.
struct NonPciDeviceInfo {
    std::string componentID;  // always written, even when empty
    std::string display;
    std::string enumId;  // written only when not empty
    std::string fqdd;    // written only when not empty
};

// Attributes of an "Application" child of a "Device".
struct ApplicationInfo {
    std::string componentType;  // "FRMW", "DRVR", "BIOS", "APAC"
    std::string version;
    std::string display;
};

// Attributes of an "OperatingSystem" element; empty service-pack and build
// fields are left out.
struct OperatingSystemInfo {
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

// One module output document: root "SVMInventory" with "Device",
// "SPStatus", "System" and "OperatingSystem" children, built as a libxml2
// tree so that every value is escaped on output. Every text passed in is
// first made valid XML 1.0 by CleanText. Not thread-safe; not copyable.
class SvmDocument {
public:
    // Opaque handle of a "Device" element, valid while the document lives.
    using DeviceRef = _xmlNode*;

    SvmDocument();
    ~SvmDocument();
    SvmDocument(const SvmDocument&) = delete;
    SvmDocument& operator=(const SvmDocument&) = delete;

    DeviceRef AddPciDevice(const PciDeviceInfo& info);
    DeviceRef AddNonPciDevice(const NonPciDeviceInfo& info);
    void AddApplication(DeviceRef device, const ApplicationInfo& info);

    // An "SPStatus" with result "false" and one "Message" child.
    void AddFailure(const std::string& message);
    void AddSystem(const std::string& systemID);
    void AddOperatingSystem(const OperatingSystemInfo& info);

    int DeviceCount() const { return m_devices; }
    int FailureCount() const { return m_failures; }

    // The document as UTF-8 text with its XML declaration, indented.
    std::string ToString() const;

    // Writes ToString() to the stream and flushes it; false on a write error.
    bool Write(std::FILE* out) const;

private:
    _xmlDoc* m_doc;
    _xmlNode* m_root;
    int m_devices = 0;
    int m_failures = 0;
};

}  // namespace svm

#endif

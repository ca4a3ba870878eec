#ifndef CDEVICEINFO_H
#define CDEVICEINFO_H

#include <memory>
#include <string>
#include <vector>

#include "DeviceInfoTypes.h"
#include "QVRCSystemInfo.h"

// One application entry of a device (kept for completeness of the record).
struct CDeviceApplicationInfo {
    std::string componentType;
    std::string version;
    std::string display;
};

// One inventory record: a device with its installed firmware, driver or
// application, a module's failure, the system entry or an operating-system entry.
//
// A run can hold hundreds of thousands of records, so the fields that parsing
// never fills live in a separately allocated block that exists only once one of
// them is set.
class CDeviceInfo {
public:
    CDeviceInfo();
    CDeviceInfo(const CDeviceInfo& other);
    CDeviceInfo& operator=(const CDeviceInfo& other);
    ~CDeviceInfo();

    // The duplicate test: component type, component id, version, enum id, FQDD,
    // the five PCI identifiers (not the PCI display) and bus, device, function.
    bool checkForEquality(const CDeviceInfo* other) const;

    // A different rule: component type, component id, dependency type, version,
    // display, detail, file path and the five PCI identifiers.
    bool operator==(const CDeviceInfo& other) const;

    const std::string& getComponentID() const { return m_componentID; }
    void setComponentID(const std::string& v) { m_componentID = v; }
    const std::string& getComponentType() const { return m_componentType; }
    void setComponentType(const std::string& v) { m_componentType = v; }
    const std::string& getDeviceName() const { return m_deviceName; }
    void setDeviceName(const std::string& v) { m_deviceName = v; }
    const std::string& getVersion() const { return m_version; }
    void setVersion(const std::string& v) { m_version = v; }
    const SPCIInfo& getPCIInfo() const { return m_pciInfo; }
    void setPCIInfo(const SPCIInfo& v) { m_pciInfo = v; }
    // The identifiers given as numbers are stored as lower-case hexadecimal text.
    void setPCIInfo(unsigned int vendorID, unsigned int deviceID, unsigned int subVendorID,
                    unsigned int subDeviceID);
    int getDeviceType() const { return m_deviceType; }
    void setDeviceType(int v) { m_deviceType = v; }
    int getStatus() const { return m_status; }
    void setStatus(int v) { m_status = v; }
    const std::string& getErrorMsg() const { return m_errorMsg; }
    void setErrorMsg(const std::string& v) { m_errorMsg = v; }
    const std::string& getDisplay() const { return m_display; }
    void setDisplay(const std::string& v) { m_display = v; }
    const std::string& getEnumId() const { return m_enumId; }
    void setEnumId(const std::string& v) { m_enumId = v; }
    const std::string& getFQDDInfo() const { return m_FQDDInfo; }
    void setFQDDInfo(const std::string& v) { m_FQDDInfo = v; }
    // Bus, device and function packed as bits 16-23, 8-15 and 0-7.
    unsigned int getBDFInfo() const {
        return (static_cast<unsigned int>(m_bdf.bus) << 16) | (static_cast<unsigned int>(m_bdf.device) << 8) |
               m_bdf.function;
    }
    const _BDFInfo& getBDF() const { return m_bdf; }
    void setBDFInfo(const _BDFInfo& v) { m_bdf = v; }
    void setBDFInfo(unsigned char bus, unsigned char device, unsigned char function) {
        m_bdf.bus = bus;
        m_bdf.device = device;
        m_bdf.function = function;
    }
    int getDependencyType() const { return m_dependencyType; }
    void setDependencyType(int v) { m_dependencyType = v; }

    // Fields kept in the rarely used block; getters return empty values while it is absent.
    const std::vector<SOSInfo>& getDependencyOS() const;
    void setDependencyOS(const std::vector<SOSInfo>& v);
    // Shares one immutable list among many records: every operating-system
    // record of a document carries all of its entries, so copying the list
    // into each would grow with the square of the entry count. Copies of the
    // record share it too; a later setDependencyOS replaces it for this record only.
    void setDependencyOS(const std::shared_ptr<const std::vector<SOSInfo>>& shared);
    const QVRCSystemInfo& getSystemInfo() const;
    void setSystemInfo(const QVRCSystemInfo& v);
    const std::string& getReleaseID() const;
    void setReleaseID(const std::string& v);
    const std::string& getParentComponentID() const;
    void setParentComponentID(const std::string& v);
    int getParentDeviceType() const;
    void setParentDeviceType(int v);
    const std::string& getDependencyContext() const;
    void setDependencyContext(const std::string& v);
    const std::vector<std::string>& getDependencyPlatforms() const;
    void setDependencyPlatforms(const std::vector<std::string>& v);
    const std::vector<SPCIInfo>& getParentPCIInfo() const;
    void setParentPCIInfo(const std::vector<SPCIInfo>& v);
    const std::vector<CDeviceApplicationInfo>& getApplicationInfo() const;
    void setApplicationInfo(const std::vector<CDeviceApplicationInfo>& v);
    int getMessageID() const;
    void setMessageID(int v);
    int getUpdateStatus() const;
    void setUpdateStatus(int v);
    const std::string& getDetail() const;
    void setDetail(const std::string& v);
    // The file path with backslashes turned into slashes, behind the download base URL.
    std::string getFilePath() const;
    void setFilePath(const std::string& v);
    const std::string& getCurrentVersion() const;
    void setCurrentVersion(const std::string& v);
    bool getRebootRequired() const;
    void setRebootRequired(bool v);
    const std::string& getDeviceIdentifier() const;
    void setDeviceIdentifier(const std::string& v);
    unsigned int getDeviceUdpateID() const;
    void setDeviceUdpateID(unsigned int v);
    unsigned short getDeviceSpecificID() const;
    void setDeviceSpecificID(unsigned short v);
    int getBus() const;
    void setBus(int v);
    int getDeviceBus() const;
    void setDeviceBus(int v);
    int getDeviceBusFunction() const;
    void setDeviceBusFunction(int v);
    void* getDeviceHandle() const;
    void setDeviceHandle(void* v);

    // Base of the address getFilePath() builds.
    static const char* const kDownloadBaseURL;

private:
    struct Extra;
    Extra& extra();
    static const Extra& emptyExtra();
    const std::string& rawFilePath() const;

    std::string m_componentID;
    std::string m_componentType;
    std::string m_deviceName;
    std::string m_version;
    SPCIInfo m_pciInfo;
    std::string m_errorMsg;
    std::string m_display;
    std::string m_enumId;
    std::string m_FQDDInfo;
    int m_deviceType = QVR_DEVICE_UNKNOWN;
    int m_dependencyType = QVR_DEPENDENCY_DEVICE;
    int m_status = QVR_STATUS_UNSET;
    _BDFInfo m_bdf;
    std::unique_ptr<Extra> m_extra;
};

#endif

#include "CDeviceInfo.h"

#include <cstdio>

const char* const CDeviceInfo::kDownloadBaseURL = "https://downloads.sorvik.invalid/";

struct CDeviceInfo::Extra {
    std::string releaseID;
    std::string parentComponentID;
    int parentDeviceType = QVR_DEVICE_UNKNOWN;
    std::string dependencyContext;
    std::vector<std::string> dependencyPlatforms;
    std::vector<SPCIInfo> parentPCIInfo;
    std::shared_ptr<const std::vector<SOSInfo>> dependencyOS;
    std::vector<CDeviceApplicationInfo> applicationInfo;
    int messageID = 0;
    int updateStatus = 0;
    std::string detail;
    std::string filePath;
    std::string currentVersion;
    bool rebootRequired = false;
    std::string deviceIdentifier;
    unsigned int deviceUdpateID = 0;
    unsigned short deviceSpecificID = 0;
    int bus = 0;
    int deviceBus = 0;
    int deviceBusFunction = 0;
    void* deviceHandle = nullptr;
    QVRCSystemInfo systemInfo;
};

const CDeviceInfo::Extra& CDeviceInfo::emptyExtra() {
    static const Extra empty;
    return empty;
}

// Read access without creating the block.
#define EXTRA_GET(field) (m_extra ? m_extra->field : emptyExtra().field)

CDeviceInfo::CDeviceInfo() = default;

CDeviceInfo::CDeviceInfo(const CDeviceInfo& other)
    : m_componentID(other.m_componentID),
      m_componentType(other.m_componentType),
      m_deviceName(other.m_deviceName),
      m_version(other.m_version),
      m_pciInfo(other.m_pciInfo),
      m_errorMsg(other.m_errorMsg),
      m_display(other.m_display),
      m_enumId(other.m_enumId),
      m_FQDDInfo(other.m_FQDDInfo),
      m_deviceType(other.m_deviceType),
      m_dependencyType(other.m_dependencyType),
      m_status(other.m_status),
      m_bdf(other.m_bdf),
      m_extra(other.m_extra ? new Extra(*other.m_extra) : nullptr) {}

CDeviceInfo& CDeviceInfo::operator=(const CDeviceInfo& other) {
    if (this != &other) {
        m_componentID = other.m_componentID;
        m_componentType = other.m_componentType;
        m_deviceName = other.m_deviceName;
        m_version = other.m_version;
        m_pciInfo = other.m_pciInfo;
        m_errorMsg = other.m_errorMsg;
        m_display = other.m_display;
        m_enumId = other.m_enumId;
        m_FQDDInfo = other.m_FQDDInfo;
        m_deviceType = other.m_deviceType;
        m_dependencyType = other.m_dependencyType;
        m_status = other.m_status;
        m_bdf = other.m_bdf;
        m_extra.reset(other.m_extra ? new Extra(*other.m_extra) : nullptr);
    }
    return *this;
}

CDeviceInfo::~CDeviceInfo() = default;

const std::string& CDeviceInfo::rawFilePath() const { return EXTRA_GET(filePath); }

CDeviceInfo::Extra& CDeviceInfo::extra() {
    if (!m_extra) m_extra.reset(new Extra());
    return *m_extra;
}

bool CDeviceInfo::checkForEquality(const CDeviceInfo* other) const {
    if (other == nullptr) return false;
    const SPCIInfo& a = m_pciInfo;
    const SPCIInfo& b = other->m_pciInfo;
    return m_componentType == other->m_componentType && m_componentID == other->m_componentID &&
           m_version == other->m_version && m_enumId == other->m_enumId && m_FQDDInfo == other->m_FQDDInfo &&
           a.componentID == b.componentID && a.deviceID == b.deviceID && a.subDeviceID == b.subDeviceID &&
           a.vendorID == b.vendorID && a.subVendorID == b.subVendorID && m_bdf.bus == other->m_bdf.bus &&
           m_bdf.device == other->m_bdf.device && m_bdf.function == other->m_bdf.function;
}

bool CDeviceInfo::operator==(const CDeviceInfo& other) const {
    const SPCIInfo& a = m_pciInfo;
    const SPCIInfo& b = other.m_pciInfo;
    return m_componentType == other.m_componentType && m_componentID == other.m_componentID &&
           m_dependencyType == other.m_dependencyType && m_version == other.m_version &&
           m_display == other.m_display && getDetail() == other.getDetail() &&
           EXTRA_GET(filePath) == other.rawFilePath() && a.componentID == b.componentID &&
           a.deviceID == b.deviceID && a.subDeviceID == b.subDeviceID && a.vendorID == b.vendorID &&
           a.subVendorID == b.subVendorID;
}

void CDeviceInfo::setPCIInfo(unsigned int vendorID, unsigned int deviceID, unsigned int subVendorID,
                             unsigned int subDeviceID) {
    char text[16];
    std::snprintf(text, sizeof text, "%x", vendorID);
    m_pciInfo.vendorID = text;
    std::snprintf(text, sizeof text, "%x", deviceID);
    m_pciInfo.deviceID = text;
    std::snprintf(text, sizeof text, "%x", subVendorID);
    m_pciInfo.subVendorID = text;
    std::snprintf(text, sizeof text, "%x", subDeviceID);
    m_pciInfo.subDeviceID = text;
}

const std::vector<SOSInfo>& CDeviceInfo::getDependencyOS() const {
    static const std::vector<SOSInfo> none;
    const std::shared_ptr<const std::vector<SOSInfo>>& shared = EXTRA_GET(dependencyOS);
    return shared ? *shared : none;
}
void CDeviceInfo::setDependencyOS(const std::vector<SOSInfo>& v) {
    extra().dependencyOS = std::make_shared<const std::vector<SOSInfo>>(v);
}
void CDeviceInfo::setDependencyOS(const std::shared_ptr<const std::vector<SOSInfo>>& shared) {
    extra().dependencyOS = shared;
}
const QVRCSystemInfo& CDeviceInfo::getSystemInfo() const { return EXTRA_GET(systemInfo); }
void CDeviceInfo::setSystemInfo(const QVRCSystemInfo& v) { extra().systemInfo = v; }
const std::string& CDeviceInfo::getReleaseID() const { return EXTRA_GET(releaseID); }
void CDeviceInfo::setReleaseID(const std::string& v) { extra().releaseID = v; }
const std::string& CDeviceInfo::getParentComponentID() const { return EXTRA_GET(parentComponentID); }
void CDeviceInfo::setParentComponentID(const std::string& v) { extra().parentComponentID = v; }
int CDeviceInfo::getParentDeviceType() const { return EXTRA_GET(parentDeviceType); }
void CDeviceInfo::setParentDeviceType(int v) { extra().parentDeviceType = v; }
const std::string& CDeviceInfo::getDependencyContext() const { return EXTRA_GET(dependencyContext); }
void CDeviceInfo::setDependencyContext(const std::string& v) { extra().dependencyContext = v; }
const std::vector<std::string>& CDeviceInfo::getDependencyPlatforms() const {
    return EXTRA_GET(dependencyPlatforms);
}
void CDeviceInfo::setDependencyPlatforms(const std::vector<std::string>& v) {
    extra().dependencyPlatforms = v;
}
const std::vector<SPCIInfo>& CDeviceInfo::getParentPCIInfo() const { return EXTRA_GET(parentPCIInfo); }
void CDeviceInfo::setParentPCIInfo(const std::vector<SPCIInfo>& v) { extra().parentPCIInfo = v; }
const std::vector<CDeviceApplicationInfo>& CDeviceInfo::getApplicationInfo() const {
    return EXTRA_GET(applicationInfo);
}
void CDeviceInfo::setApplicationInfo(const std::vector<CDeviceApplicationInfo>& v) {
    extra().applicationInfo = v;
}
int CDeviceInfo::getMessageID() const { return EXTRA_GET(messageID); }
void CDeviceInfo::setMessageID(int v) { extra().messageID = v; }
int CDeviceInfo::getUpdateStatus() const { return EXTRA_GET(updateStatus); }
void CDeviceInfo::setUpdateStatus(int v) { extra().updateStatus = v; }
const std::string& CDeviceInfo::getDetail() const { return EXTRA_GET(detail); }
void CDeviceInfo::setDetail(const std::string& v) { extra().detail = v; }
std::string CDeviceInfo::getFilePath() const {
    std::string path = EXTRA_GET(filePath);
    for (char& c : path)
        if (c == '\\') c = '/';
    return kDownloadBaseURL + path;
}
void CDeviceInfo::setFilePath(const std::string& v) { extra().filePath = v; }
const std::string& CDeviceInfo::getCurrentVersion() const { return EXTRA_GET(currentVersion); }
void CDeviceInfo::setCurrentVersion(const std::string& v) { extra().currentVersion = v; }
bool CDeviceInfo::getRebootRequired() const { return EXTRA_GET(rebootRequired); }
void CDeviceInfo::setRebootRequired(bool v) { extra().rebootRequired = v; }
const std::string& CDeviceInfo::getDeviceIdentifier() const { return EXTRA_GET(deviceIdentifier); }
void CDeviceInfo::setDeviceIdentifier(const std::string& v) { extra().deviceIdentifier = v; }
unsigned int CDeviceInfo::getDeviceUdpateID() const { return EXTRA_GET(deviceUdpateID); }
void CDeviceInfo::setDeviceUdpateID(unsigned int v) { extra().deviceUdpateID = v; }
unsigned short CDeviceInfo::getDeviceSpecificID() const { return EXTRA_GET(deviceSpecificID); }
void CDeviceInfo::setDeviceSpecificID(unsigned short v) { extra().deviceSpecificID = v; }
int CDeviceInfo::getBus() const { return EXTRA_GET(bus); }
void CDeviceInfo::setBus(int v) { extra().bus = v; }
int CDeviceInfo::getDeviceBus() const { return EXTRA_GET(deviceBus); }
void CDeviceInfo::setDeviceBus(int v) { extra().deviceBus = v; }
int CDeviceInfo::getDeviceBusFunction() const { return EXTRA_GET(deviceBusFunction); }
void CDeviceInfo::setDeviceBusFunction(int v) { extra().deviceBusFunction = v; }
void* CDeviceInfo::getDeviceHandle() const { return EXTRA_GET(deviceHandle); }
void CDeviceInfo::setDeviceHandle(void* v) { extra().deviceHandle = v; }

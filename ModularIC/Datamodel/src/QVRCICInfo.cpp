#include "QVRCICInfo.h"

#include "CDeviceInfo.h"
#include "SorvikVersion.h"

QVRCICInfo::QVRCICInfo()
    : m_name("Inventory Collector"),
      m_version(SORVIK_VERSION_TEXT),
      m_componentID("106946"),
      m_componentType("APAC") {
    m_build = BuildFromVersion(m_version);
}

QVRCICInfo::QVRCICInfo(const CDeviceInfo& record)
    : m_name(record.getDisplay()), m_version(record.getVersion()), m_componentID(record.getComponentID()) {
    m_build = BuildFromVersion(m_version);
}

std::string QVRCICInfo::BuildFromVersion(const std::string& version) {
    const std::string::size_type underscore = version.rfind('_');
    const std::string::size_type paren = version.rfind(')');
    if (underscore == std::string::npos || paren == std::string::npos || paren <= underscore)
        return std::string();
    return version.substr(underscore + 1, paren - underscore - 1);
}

#ifndef QVRCICINFO_H
#define QVRCICINFO_H

#include <string>

class CDeviceInfo;

// The collector's own identity, from which the inventory document takes its
// version and build attributes.
class QVRCICInfo {
public:
    // The collector as shipped: "Inventory Collector", "21.09.200 (BLD_1155)",
    // component id "106946", component type "APAC".
    QVRCICInfo();
    // Name, version and component id from the record; build from the version.
    explicit QVRCICInfo(const CDeviceInfo& record);

    // The part of the version between its last "_" and its last ")".
    static std::string BuildFromVersion(const std::string& version);

    const std::string& GetName() const { return m_name; }
    const std::string& GetBuild() const { return m_build; }
    const std::string& GetVersion() const { return m_version; }
    const std::string& GetComponentID() const { return m_componentID; }
    const std::string& GetComponentType() const { return m_componentType; }

private:
    std::string m_name;
    std::string m_build;
    std::string m_version;
    std::string m_componentID;
    std::string m_componentType;
};

#endif

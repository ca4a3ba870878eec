#ifndef QVRCSYSTEMINFO_H
#define QVRCSYSTEMINFO_H

#include <string>

// The server's own identity; only the system identifier is reported.
class QVRCSystemInfo {
public:
    void setSystemInfo(const std::string& systemID) { m_systemID = systemID; }
    const std::string& getSystemID() const { return m_systemID; }
    bool isEmpty() const { return m_systemID.empty(); }

    void setSystemName(const std::string& name) { m_systemName = name; }
    const std::string& getSystemName() const { return m_systemName; }
    void setSystemModel(const std::string& model) { m_systemModel = model; }
    const std::string& getSystemModel() const { return m_systemModel; }
    void setSystemVendor(const std::string& vendor) { m_systemVendor = vendor; }
    const std::string& getSystemVendor() const { return m_systemVendor; }

private:
    std::string m_systemID;
    std::string m_systemName;
    std::string m_systemModel;
    std::string m_systemVendor;
};

#endif

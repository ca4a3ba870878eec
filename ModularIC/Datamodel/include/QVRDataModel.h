#ifndef QVRDATAMODEL_H
#define QVRDATAMODEL_H

#include <memory>
#include <vector>

#include "CDeviceInfo.h"
#include "QVRCICInfo.h"
#include "QVRCSystemInfo.h"

// The inventory of one run, as the output writers read it. Owns the records
// filed into it.
class QVRDataModel {
public:
    QVRDataModel();
    QVRDataModel(const QVRDataModel&) = delete;
    QVRDataModel& operator=(const QVRDataModel&) = delete;
    ~QVRDataModel();

    // Takes ownership: status 0 goes to the device list, any other to the error list.
    bool Add(CDeviceInfo* record);
    // Copies the operating-system entries of the first such record filed; the
    // caller keeps the record.
    bool AddOperatingSystemInfo(const CDeviceInfo* record);
    // Copies the record's system information; the caller keeps the record.
    bool AddSystemInfo(const CDeviceInfo* record);
    // Replaces the collector's own information with one made from the record.
    bool AddInventoryCollectorInfo(const CDeviceInfo* record);

    const std::vector<CDeviceInfo*>& GetDeviceList() const { return m_devices; }
    const std::vector<CDeviceInfo*>& GetErrorList() const { return m_errors; }
    const std::vector<SOSInfo>& GetOperatingSystemList() const { return m_operatingSystems; }
    // The first operating-system entry, or null when there is none.
    const SOSInfo* GetOperatingSystemInfo() const;
    // The system information, or null when no module reported a system id.
    const QVRCSystemInfo* GetSystemInfo() const;
    const QVRCICInfo& GetInventoryCollectorInfo() const { return *m_collectorInfo; }

private:
    std::vector<CDeviceInfo*> m_devices;
    std::vector<CDeviceInfo*> m_errors;
    QVRCSystemInfo m_systemInfo;
    bool m_hasSystemInfo = false;
    std::vector<SOSInfo> m_operatingSystems;
    std::unique_ptr<QVRCICInfo> m_collectorInfo;
};

#endif

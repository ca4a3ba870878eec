#include "QVRDataModel.h"

#include <new>

QVRDataModel::QVRDataModel() : m_collectorInfo(new QVRCICInfo()) {}

QVRDataModel::~QVRDataModel() {
    for (CDeviceInfo* record : m_devices) delete record;
    for (CDeviceInfo* record : m_errors) delete record;
}

bool QVRDataModel::Add(CDeviceInfo* record) {
    if (record == nullptr) return false;
    if (record->getStatus() == QVR_STATUS_SUCCESS)
        m_devices.push_back(record);
    else
        m_errors.push_back(record);
    return true;
}

bool QVRDataModel::AddOperatingSystemInfo(const CDeviceInfo* record) {
    if (record == nullptr) return false;
    // Every operating-system record of a document carries all of its entries, so
    // the first record filed already holds what the later ones repeat.
    if (m_operatingSystems.empty()) m_operatingSystems = record->getDependencyOS();
    return true;
}

bool QVRDataModel::AddSystemInfo(const CDeviceInfo* record) {
    if (record == nullptr) return false;
    m_systemInfo = record->getSystemInfo();
    m_hasSystemInfo = true;
    return true;
}

bool QVRDataModel::AddInventoryCollectorInfo(const CDeviceInfo* record) {
    if (record == nullptr) return false;
    QVRCICInfo* info = new (std::nothrow) QVRCICInfo(*record);
    if (info == nullptr) return false;
    m_collectorInfo.reset(info);
    return true;
}

const SOSInfo* QVRDataModel::GetOperatingSystemInfo() const {
    return m_operatingSystems.empty() ? nullptr : &m_operatingSystems.front();
}

const QVRCSystemInfo* QVRDataModel::GetSystemInfo() const {
    return m_hasSystemInfo ? &m_systemInfo : nullptr;
}

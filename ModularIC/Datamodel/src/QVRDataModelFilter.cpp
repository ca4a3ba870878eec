#include "QVRDataModelFilter.h"

#include "QVROptionKeys.h"

QVRDataModelFilter::QVRDataModelFilter(bool enabled) : m_enabled(enabled) {}

void QVRDataModelFilter::Initialize(const QVRArgumentList* args) {
    if (args == nullptr) return;
    const QVRArgumentList::OptionMap options = args->GetListOfOption();
    QVRArgumentList::OptionMap::const_iterator it = options.find(QVR_OPT_COMPID);
    if (it != options.end()) m_compIDs.insert(it->second.begin(), it->second.end());
    it = options.find(QVR_OPT_COMPTYPE);
    if (it != options.end()) m_compTypes.insert(it->second.begin(), it->second.end());
}

bool QVRDataModelFilter::CheckFilterCompID(const CDeviceInfo* record) const {
    if (!m_enabled || m_compIDs.empty()) return true;
    return record != nullptr && m_compIDs.count(record->getComponentID()) != 0;
}

bool QVRDataModelFilter::CheckFilterCompType(const CDeviceInfo* record) const {
    if (!m_enabled || m_compTypes.empty()) return true;
    return record != nullptr && m_compTypes.count(record->getComponentType()) != 0;
}

bool QVRDataModelFilter::IsFilterSatisfied(const CDeviceInfo* record) const {
    if (!m_enabled) return true;
    return CheckFilterCompID(record) && CheckFilterCompType(record);
}

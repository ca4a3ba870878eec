#ifndef QVRDATAMODELFILTER_H
#define QVRDATAMODELFILTER_H

#include <set>
#include <string>

#include "CDeviceInfo.h"
#include "QVRArgumentList.h"

// The user's restriction of the inventory to given component ids ("compID")
// and component types ("comptype"), asked about every device record. Exact,
// case-sensitive matching. Read-only once initialised, so it may be asked from
// any thread.
class QVRDataModelFilter {
public:
    explicit QVRDataModelFilter(bool enabled);

    // Adds every value of "compID" and of "comptype" to the two sets.
    void Initialize(const QVRArgumentList* args);

    // True when disabled or the set is empty, else whether the record's
    // component id (type) is in the set.
    bool CheckFilterCompID(const CDeviceInfo* record) const;
    bool CheckFilterCompType(const CDeviceInfo* record) const;
    // Both tests: a record passes only when each non-empty set holds its value.
    bool IsFilterSatisfied(const CDeviceInfo* record) const;

    const std::set<std::string>& GetCompIDs() const { return m_compIDs; }
    const std::set<std::string>& GetCompTypes() const { return m_compTypes; }
    bool IsEnabled() const { return m_enabled; }

private:
    std::set<std::string> m_compIDs;
    std::set<std::string> m_compTypes;
    bool m_enabled;
};

#endif

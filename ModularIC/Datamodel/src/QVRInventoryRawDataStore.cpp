#include "QVRInventoryRawDataStore.h"

#include <functional>
#include <new>
#include <unordered_set>

#include "CSharedMemWriter.h"

namespace {

// Ready-made records stored beside the module outputs.
class QVRRecordsRawData : public IQVRInventoryRawData {
public:
    QVRRecordsRawData(const std::string& moduleIdentity, std::vector<CDeviceInfo*>& records)
        : m_moduleIdentity(moduleIdentity) {
        m_records.swap(records);
    }
    ~QVRRecordsRawData() override {
        for (CDeviceInfo* record : m_records) delete record;
    }
    bool PopulateData(std::vector<CDeviceInfo*>& out) override {
        out.insert(out.end(), m_records.begin(), m_records.end());
        m_records.clear();
        return true;
    }
    const std::string& GetModuleName() const override { return m_moduleIdentity; }

private:
    std::string m_moduleIdentity;
    std::vector<CDeviceInfo*> m_records;
};

// Hash over exactly the fields CDeviceInfo::checkForEquality compares, so that
// equal records always meet in the same bucket.
struct EqualityKeyHash {
    size_t operator()(const CDeviceInfo* record) const {
        const std::hash<std::string> text;
        const SPCIInfo& pci = record->getPCIInfo();
        const _BDFInfo& bdf = record->getBDF();
        size_t seed =
            (static_cast<size_t>(bdf.bus) << 16) | (static_cast<size_t>(bdf.device) << 8) | bdf.function;
        const std::string* fields[] = {&record->getComponentType(),
                                       &record->getComponentID(),
                                       &record->getVersion(),
                                       &record->getEnumId(),
                                       &record->getFQDDInfo(),
                                       &pci.componentID,
                                       &pci.deviceID,
                                       &pci.subDeviceID,
                                       &pci.vendorID,
                                       &pci.subVendorID};
        for (const std::string* field : fields)
            seed ^= text(*field) + 0x9e3779b97f4a7c15ull + (seed << 6) + (seed >> 2);
        return seed;
    }
};

struct EqualityKeyEqual {
    bool operator()(const CDeviceInfo* a, const CDeviceInfo* b) const { return a->checkForEquality(b); }
};

// The kept successful records so far, indexed by their equality key.
class DuplicateIndex {
public:
    // Drops (and deletes) every record from index `from` on that equals a kept
    // successful record; keeps the rest in order. Failure records (any status
    // but 0) are always kept and never indexed.
    void Apply(std::vector<CDeviceInfo*>& records, size_t from) {
        size_t kept = from;
        for (size_t i = from; i < records.size(); ++i) {
            CDeviceInfo* record = records[i];
            if (record == nullptr) continue;
            if (record->getStatus() != QVR_STATUS_SUCCESS || m_kept.insert(record).second)
                records[kept++] = record;
            else
                delete record;
        }
        records.resize(kept);
    }

private:
    std::unordered_set<const CDeviceInfo*, EqualityKeyHash, EqualityKeyEqual> m_kept;
};

}  // namespace

QVRInventoryRawDataStore::QVRInventoryRawDataStore(IQVRShmApi& progress)
    : m_pSharedMemWriter(new (std::nothrow) CSharedMemWriter(progress)),
      m_totalInvComponents(0),
      m_completedInvComponents(0),
      m_progressEnded(false) {}

QVRInventoryRawDataStore::~QVRInventoryRawDataStore() {
    for (IQVRInventoryRawData* data : m_rawData) delete data;
    delete m_pSharedMemWriter;
}

bool QVRInventoryRawDataStore::WriteData(IQVRInventoryRawData* data) {
    if (data == nullptr) return false;
    QVRCMutexLock lock(m_mutex);
    ++m_completedInvComponents;
    // A failed progress write leaves the run going; the reader just sees older counters.
    if (m_pSharedMemWriter != nullptr && !m_progressEnded)
        m_pSharedMemWriter->WriteToSharedMem(m_totalInvComponents, m_completedInvComponents);
    m_rawData.push_back(data);
    return true;
}

void QVRInventoryRawDataStore::EndProgress() {
    // Under the mutex: no module finishing meanwhile creates the segment anew.
    QVRCMutexLock lock(m_mutex);
    m_progressEnded = true;
    if (m_pSharedMemWriter != nullptr) m_pSharedMemWriter->RemoveSegment();
}

bool QVRInventoryRawDataStore::WriteData(std::string& moduleIdentity, std::vector<CDeviceInfo*>& records) {
    IQVRInventoryRawData* data = new (std::nothrow) QVRRecordsRawData(moduleIdentity, records);
    if (data == nullptr) return false;
    QVRCMutexLock lock(m_mutex);
    m_rawData.push_back(data);
    return true;
}

bool QVRInventoryRawDataStore::Process(std::vector<CDeviceInfo*>& out) {
    std::vector<IQVRInventoryRawData*> stored;
    {
        QVRCMutexLock lock(m_mutex);
        stored.swap(m_rawData);
    }
    // Duplicates are removed as each output is parsed, which gives the same
    // list as one pass at the end (the earlier record always survives) while
    // never holding the duplicates of all outputs at once.
    DuplicateIndex index;
    index.Apply(out, 0);
    for (IQVRInventoryRawData* data : stored) {
        const size_t from = out.size();
        data->PopulateData(out);
        delete data;
        index.Apply(out, from);
    }
    return true;
}

void QVRInventoryRawDataStore::SetTotalInvComponents(int total) {
    QVRCMutexLock lock(m_mutex);
    m_totalInvComponents = total;
}

int QVRInventoryRawDataStore::GetTotalInvComponents() const {
    QVRCMutexLock lock(m_mutex);
    return m_totalInvComponents;
}

int QVRInventoryRawDataStore::GetCompletedInvComponents() const {
    QVRCMutexLock lock(m_mutex);
    return m_completedInvComponents;
}

void QVRInventoryRawDataStore::RemoveDuplicates(std::vector<CDeviceInfo*>& records) {
    DuplicateIndex index;
    index.Apply(records, 0);
}

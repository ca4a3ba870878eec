#ifndef QVRINVENTORYRAWDATASTORE_H
#define QVRINVENTORYRAWDATASTORE_H

#include <cstdint>
#include <string>
#include <vector>

#include "CDeviceInfo.h"
#include "IQVRInventoryRawData.h"
#include "IQVRShmApi.h"
#include "QVRCMutex.h"

class CSharedMemWriter;

// Keeps every module's output as it arrives from the pool threads, counts it
// for progress, and parses it all once the modules have run.
class QVRInventoryRawDataStore {
public:
    // progress, borrowed, carries the counters to a -progress reader.
    explicit QVRInventoryRawDataStore(IQVRShmApi& progress = IQVRShmApi::Real());
    QVRInventoryRawDataStore(const QVRInventoryRawDataStore&) = delete;
    QVRInventoryRawDataStore& operator=(const QVRInventoryRawDataStore&) = delete;
    virtual ~QVRInventoryRawDataStore();

    // Thread-safe. Under the store mutex: counts the module as completed,
    // publishes the counters to the progress channel and takes ownership of data.
    bool WriteData(IQVRInventoryRawData* data);
    // Adds ready-made records (the collector's own).
    bool WriteData(std::string& moduleIdentity, std::vector<CDeviceInfo*>& records);
    // Thread-safe. Removes the progress segment and publishes nothing after:
    // for a run ended by a signal, so that no -progress reports its counters.
    void EndProgress();

    // Parses every stored output in arrival order into out, then removes duplicates.
    // Runs on one thread after all writers have finished.
    bool Process(std::vector<CDeviceInfo*>& out);

    void SetTotalInvComponents(int total);
    int GetTotalInvComponents() const;
    int GetCompletedInvComponents() const;

    // Keeps the first of every group of equal successful records (by
    // CDeviceInfo::checkForEquality) and every record with another status.
    static void RemoveDuplicates(std::vector<CDeviceInfo*>& records);

protected:
    CSharedMemWriter* m_pSharedMemWriter;
    std::vector<IQVRInventoryRawData*> m_rawData;
    mutable QVRCMutex m_mutex;
    int32_t m_totalInvComponents;
    int32_t m_completedInvComponents;
    bool m_progressEnded;
};

#endif

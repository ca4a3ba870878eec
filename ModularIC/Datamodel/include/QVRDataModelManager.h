#ifndef QVRDATAMODELMANAGER_H
#define QVRDATAMODELMANAGER_H

#include <string>

#include "QVRArgumentList.h"
#include "QVRDataModel.h"
#include "QVRInventoryRawDataStore.h"

class QVRDataModelFilter;

// The process-wide raw data store of a run, which also files the parsed records
// into the run's data model.
class QVRDataModelManager : public QVRInventoryRawDataStore {
public:
    // The single instance, created on first use (null if it cannot be
    // allocated) with the given progress channel, which it borrows.
    static QVRDataModelManager* GetInstance(IQVRShmApi& progress = IQVRShmApi::Real());

    // Deleting the instance clears the singleton, so GetInstance makes a new one.
    ~QVRDataModelManager() override;

    // Borrows the model; creates the output filter from the argument list. True.
    bool Initialize(QVRDataModel* model, const QVRArgumentList* args);

    // Thread-safe. Stores one module's output for later parsing. False (nothing
    // stored or counted) for non-empty output without "<SVMInventory".
    virtual bool WriteData(std::string& moduleIdentity, std::string& output);
    using QVRInventoryRawDataStore::WriteData;

    // Parses, removes duplicates and files every record into the model. True.
    bool Process();

protected:
    explicit QVRDataModelManager(IQVRShmApi& progress);

private:
    static QVRDataModelManager* s_instance;
    QVRDataModel* m_pDataModel;
    QVRDataModelFilter* m_pFilter;
};

#endif

#include "QVRDataModelManager.h"

#include <new>
#include <sstream>

#include "CLogger.h"
#include "QVRDataModelFilter.h"
#include "QVRInventoryDataFactory.h"

namespace {
const char* const kOperatingSystemDisplay = "OperatingSystem";
const char* const kSystemDisplay = "SystemInventory";
}  // namespace

QVRDataModelManager* QVRDataModelManager::s_instance = nullptr;

QVRDataModelManager* QVRDataModelManager::GetInstance(IQVRShmApi& progress) {
    if (s_instance == nullptr) s_instance = new (std::nothrow) QVRDataModelManager(progress);
    return s_instance;
}

QVRDataModelManager::QVRDataModelManager(IQVRShmApi& progress)
    : QVRInventoryRawDataStore(progress), m_pDataModel(nullptr), m_pFilter(nullptr) {}

QVRDataModelManager::~QVRDataModelManager() {
    delete m_pFilter;
    if (s_instance == this) s_instance = nullptr;
}

bool QVRDataModelManager::Initialize(QVRDataModel* model, const QVRArgumentList* args) {
    m_pDataModel = model;
    // Stored outputs borrow the filter, so a second call refills the same object.
    if (m_pFilter == nullptr)
        m_pFilter = new (std::nothrow) QVRDataModelFilter(true);
    else
        *m_pFilter = QVRDataModelFilter(true);
    if (m_pFilter != nullptr) m_pFilter->Initialize(args);
    return true;
}

bool QVRDataModelManager::WriteData(std::string& moduleIdentity, std::string& output) {
    const QVRInventoryDataFactory factory;
    IQVRInventoryRawData* data = factory(moduleIdentity, output, m_pFilter);
    if (data == nullptr) return false;
    return QVRInventoryRawDataStore::WriteData(data);
}

bool QVRDataModelManager::Process() {
    std::vector<CDeviceInfo*> records;
    QVRInventoryRawDataStore::Process(records);
    std::ostringstream message;
    message << "QVRDataModelManager::Process : \t\t\t\t" << records.size()
            << " records after duplicate removal.";
    CLogger::GetInstance()->log(__FILE__, __LINE__, message);
    for (CDeviceInfo* record : records) {
        const std::string& display = record->getDisplay();
        if (display == kOperatingSystemDisplay) {
            if (m_pDataModel != nullptr) m_pDataModel->AddOperatingSystemInfo(record);
            delete record;
        } else if (display == kSystemDisplay) {
            if (m_pDataModel != nullptr) m_pDataModel->AddSystemInfo(record);
            delete record;
        } else if (m_pDataModel == nullptr || !m_pDataModel->Add(record)) {
            delete record;
        }
    }
    return true;
}

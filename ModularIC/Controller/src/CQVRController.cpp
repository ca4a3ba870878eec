#include "CQVRController.h"

#include <cerrno>
#include <cstring>
#include <new>

#include "CICContextEvaluator_SysGen.h"
#include "CLockManager.h"
#include "CLogger.h"
#include "CPlatformLayer.h"
#include "CQVRBadAllocException.h"
#include "CQVRICException.h"
#include "CQVRICInvoker.h"
#include "CQVRInterruptHandler.h"
#include "CQVRModuleList.h"
#include "CQVRModuleManager.h"
#include "CSharedMemReader.h"
#include "IQVRGenerationSource.h"
#include "QVRArgumentList.h"
#include "QVRDataModel.h"
#include "QVRDataModelManager.h"
#include "QVRICVersion.h"
#include "QVROptionArgumentValidation.h"
#include "QVROptionKeys.h"
#include "QVROutputterManager.h"
#include "QVRResultCodes.h"

// Every phase adds its own frame to an exception on its way to main.
#define QVR_PHASE_CATCH(function)                                                           \
    catch (CQVRICException & exception) {                                                   \
        exception.AddStackTrace(__FILE__, __LINE__, function);                              \
        throw;                                                                              \
    }                                                                                       \
    catch (std::bad_alloc & exception) {                                                    \
        throw CQVRBadAllocException::FromBadAlloc(exception, __FILE__, __LINE__, function); \
    }

namespace {
const int kNoLock = -1;
const int kLockError = -2;

// The line this failure has always reported; update tools match its text.
const long kNoGenerationLine = 220;

void LogOutputterAllocationFailure(unsigned int line) {
    CLogger::GetInstance()->log(
        __FILE__, line,
        "CQVRController::WriteOutput() : \t\t\t\tUnable to create memory for QVROutputterManager Object.");
}
}  // namespace

CQVRController::CQVRController() : CQVRController(nullptr) {}

CQVRController::CQVRController(CLockManager* lockManager, IQVRGenerationSource* generations,
                               IQVRShmApi* progress)
    : m_pArgumentList(nullptr),
      m_pModuleList(nullptr),
      m_pDataModel(nullptr),
      m_pDataModelManager(nullptr),
      m_pICInvoker(nullptr),
      m_pGenerations(generations),
      m_pProgress(progress != nullptr ? progress : &IQVRShmApi::Real()),
      m_lockFileID(kNoLock) {
    m_startDirectory = CPlatformLayer::getCurrentDirectory();
    m_pModuleList = new (std::nothrow) CQVRModuleList();
    if (m_pModuleList == nullptr) {
        delete lockManager;
        throw CQVRBadAllocException("Unable to create memory for QVRDataModel Object.");
    }
    m_pLockManager = lockManager != nullptr ? lockManager : new (std::nothrow) CLockManager();
    if (m_pLockManager == nullptr) {
        delete m_pModuleList;
        throw CQVRBadAllocException("Unable to create memory for QVRDataModel Object.");
    }
    m_pArgumentList = QVRArgumentList::GetInstance();
    if (m_pArgumentList == nullptr) {
        delete m_pModuleList;
        delete m_pLockManager;
        throw CQVRBadAllocException("Unable to create memory for QVRArgumentList Object.");
    }
}

CQVRController::~CQVRController() {
    // Only a descriptor this process locked is released: releasing removes the
    // file. The run is over: its progress stays as at any end, for a reader.
    if (m_lockFileID >= 0) ArmInterruptCleanup(nullptr);
    delete m_pICInvoker;
    delete m_pDataModelManager;
    QVROutputterManager::ReleaseInstance();
    delete m_pDataModel;
    delete m_pModuleList;
    // Released by whichever comes first, this or a signal's cleanup.
    if (m_lockFileID >= 0) CQVRInterruptHandler::RunCleanup();
    delete m_pLockManager;
}

void CQVRController::ArmInterruptCleanup(QVRDataModelManager* progress) {
    CLockManager* lockManager = m_pLockManager;
    const int handle = m_lockFileID;
    CQVRInterruptHandler::SetCleanup([lockManager, handle, progress] {
        // The segment goes first: once the lock is free, a new run may make its own.
        if (progress != nullptr) progress->EndProgress();
        lockManager->ReleaseProcessLock(handle);
    });
}

std::string CQVRController::GetProgramName() { return "sorvik"; }

unsigned int CQVRController::GetICInventory(int argc, char** argv) {
    try {
        const unsigned int parsed = InitCommandLineParser(argc, argv);
        if (parsed != QVR_RESULT_SUCCESS) return parsed;

        if (CheckForSingleOption()) return QVR_RESULT_SUCCESS;

        const unsigned int locked = CheckForProgressOption();
        if (locked != QVR_RESULT_SUCCESS) return locked;

        PopulateSystemGeneration();
        PopulateModuleList();
        InitDataModel();
        InitICInvoker();

        // A failed invocation deliberately ends the run without output or message.
        if (m_pICInvoker->ProcessInventory() != 0) return QVR_RESULT_SUCCESS;

        // Modules may have moved the working directory; relative output paths are
        // meant against the directory the user started in.
        CPlatformLayer::setCurrentDirectory(m_startDirectory);
        return WriteOutput();
    }
    QVR_PHASE_CATCH("GetICInventory")
}

unsigned int CQVRController::InitCommandLineParser(int argc, char** argv) {
    try {
        QVROptionArgumentValidation validation;
        const int result = validation.ProcessArgument(argc, argv, m_pArgumentList);
        if (result != 0) {
            if (validation.IsInvalidOption()) {
                CLogger::GetInstance()->log(
                    __FILE__, __LINE__,
                    "CQVRController::InitCommandLineParser() : \t\t\t\tInvalid Command option found.");
            } else {
                CLogger::GetInstance()->log(__FILE__, __LINE__,
                                            "CQVRController::InitCommandLineParser() : \t\t\t\tError "
                                            "occurred during parsing command line.");
            }
        }
        return static_cast<unsigned int>(result);
    }
    QVR_PHASE_CATCH("InitCommandLineParser")
}

bool CQVRController::CheckForSingleOption() {
    try {
        const std::string single = m_pArgumentList->GetSingleOption();
        if (single.empty()) return false;
        if (single == QVR_OPT_HELP) {
            CLogger::GetInstance()->log(
                __FILE__, __LINE__,
                "CQVRController::CheckForSingleOption() : \t\t\t\tUnique help option found.");
            PrintHelpUsage("sorvik");
        } else if (single == QVR_OPT_VERSION) {
            CLogger::GetInstance()->log(
                __FILE__, __LINE__,
                "CQVRController::CheckForSingleOption() : \t\t\t\tUnique version option found.");
            PrintICVersion();
        }
        return true;
    }
    QVR_PHASE_CATCH("CheckForSingleOption")
}

unsigned int CQVRController::CheckForProgressOption() {
    try {
        const QVRArgumentList::OptionMap options = m_pArgumentList->GetListOfOption();
        const bool progress = options.find(QVR_OPT_PROGRESS) != options.end();

        SetLockFileID(m_pLockManager->ProcessLock());
        if (m_lockFileID == kLockError) return QVR_RESULT_LOCK_ERROR;
        // An interrupted run must not leave its lock file behind.
        if (m_lockFileID >= 0) ArmInterruptCleanup(nullptr);

        if (progress) {
            if (m_lockFileID == kNoLock) return WriteICProgress();
            // Nothing is running; the lock just taken is released with the controller.
            return QVR_RESULT_NO_INSTANCE_ACTIVE;
        }
        if (m_lockFileID == kNoLock) return QVR_RESULT_ANOTHER_INSTANCE;
        return QVR_RESULT_SUCCESS;
    }
    QVR_PHASE_CATCH("CheckForProgressOption")
}

void CQVRController::PopulateSystemGeneration() {
    try {
        if (m_pGenerations != nullptr) {
            m_pGenerations->GetGenerations(m_systemGenerations);
        } else {
            CICContextEvaluator_SysGen* evaluator = CICContextEvaluator_SysGen::GetContextEvaluatorInstance();
            if (evaluator != nullptr) evaluator->GetSysGenerationInventoryList(m_systemGenerations);
        }
        if (m_systemGenerations.empty()) {
            CICContextEvaluator_SysGen::DeleteContextEvaluatorInstance();
            throw CQVRICException(__FILE__, kNoGenerationLine, "PopulateSystemGeneration",
                                  "Error occurred to get system generation list.", "CQVRICException");
        }
        // Every machine also runs the generation-independent modules.
        m_systemGenerations.insert("Generic");
        CICContextEvaluator_SysGen::DeleteContextEvaluatorInstance();
    }
    QVR_PHASE_CATCH("PopulateSystemGeneration")
}

void CQVRController::PopulateModuleList() {
    try {
        CQVRModuleManager manager(m_pArgumentList, &m_systemGenerations, m_startDirectory);
        if (manager.PopulateModuleList(m_pModuleList) != 0) {
            CLogger::GetInstance()->log(__FILE__, __LINE__,
                                        "CQVRController::PopulateModuleList() : \t\t\t\tError occurred "
                                        "during parsing icconfig.json file.");
            throw CQVRICException(__FILE__, __LINE__, "PopulateModuleList",
                                  "Error occurred during parsing icconfig.json file", "CQVRICException");
        }
    }
    QVR_PHASE_CATCH("PopulateModuleList")
}

void CQVRController::InitDataModel() {
    try {
        m_pDataModel = new (std::nothrow) QVRDataModel();
        if (m_pDataModel == nullptr) {
            CLogger::GetInstance()->log(
                __FILE__, __LINE__,
                "CQVRController::InitDataModel() : \t\t\t\tUnable to create memory for QVRDataModel Object.");
            throw CQVRBadAllocException("Unable to create memory for QVRDataModel Object.");
        }
        m_pDataModelManager = QVRDataModelManager::GetInstance(*m_pProgress);
        if (m_pDataModelManager == nullptr) {
            CLogger::GetInstance()->log(
                __FILE__, __LINE__,
                "CQVRController::InitDataModel() : \t\t\t\tUnable to create memory for "
                "QVRDataModelManager Object.");
            throw CQVRBadAllocException("Unable to create memory for QVRDataModelManager Object.");
        }
        m_pDataModelManager->Initialize(m_pDataModel, m_pArgumentList);
        // Nor, from now on, the counters of modules it will never finish.
        if (m_lockFileID >= 0) ArmInterruptCleanup(m_pDataModelManager);
    }
    QVR_PHASE_CATCH("InitDataModel")
}

void CQVRController::InitICInvoker() {
    try {
        m_pICInvoker = new (std::nothrow) CQVRICInvoker(m_pArgumentList, m_pDataModelManager, m_pModuleList);
        if (m_pICInvoker == nullptr) {
            CLogger::GetInstance()->log(
                __FILE__, __LINE__,
                "CQVRController::InitICInvoker() : \t\t\t\tUnable to create memory for CICInvoker Object.");
            throw CQVRBadAllocException("Unable to create memory for \t\t\tCICInvoker Object.");
        }
    }
    QVR_PHASE_CATCH("InitICInvoker")
}

unsigned int CQVRController::WriteOutput() {
    try {
        if (m_pDataModelManager->Process()) {
            QVROutputterManager* outputter = QVROutputterManager::GetInstance();
            if (outputter == nullptr) {
                LogOutputterAllocationFailure(__LINE__);
                throw CQVRBadAllocException("Unable to create memory for \t\t\tQVROutputterManager Object.");
            }
            if (!outputter->Write(m_pArgumentList, m_pDataModel)) {
                const int error = errno;
                if (error == EPIPE) return QVR_RESULT_OUTPUT_CLOSED;
                throw CQVRICException(
                    __FILE__, __LINE__, "WriteOutput",
                    std::string("Unable to write the inventory: ") + std::strerror(error != 0 ? error : EIO),
                    "CQVRICException");
            }
        }
        // A run that collected device records deliberately ends with result 1.
        return m_pDataModel->GetDeviceList().empty() ? QVR_RESULT_SUCCESS : QVR_RESULT_RECORDS_COLLECTED;
    }
    QVR_PHASE_CATCH("WriteOutput")
}

unsigned int CQVRController::WriteICProgress() {
    try {
        CSharedMemReader reader(*m_pProgress);
        const int* counters = reader.ReadData();
        const int total = counters[0];
        const int completed = counters[1];
        // Equal counters mean the other run has finished (or none ever wrote):
        // the next run starts from a fresh segment.
        if (total == completed) reader.CleanUP();

        QVROutputterManager* outputter = QVROutputterManager::GetInstance();
        if (outputter == nullptr) {
            LogOutputterAllocationFailure(__LINE__);
            throw CQVRBadAllocException("Unable to create memory for \t\t\tQVROutputterManager Object.");
        }
        return outputter->WriteProgress(m_pArgumentList, total, completed) ? QVR_RESULT_PROGRESS_WRITTEN
                                                                           : QVR_RESULT_PROGRESS_FAILED;
    }
    QVR_PHASE_CATCH("WriteICProgress")
}

#include "CQVRInvokeProcessWithOutput.h"

#include <new>

#include "CQVRBadAllocException.h"
#include "CQVRICException.h"
#include "CQVRInvokerTaskExe.h"
#include "CQVRInvokerTaskLibrary.h"
#include "QVRDataModelManager.h"
#include "QVRInvokerFrames.h"

namespace {
const char kSourcePath[] = "qvr_ModularIC/Invoker/src/CQVRInvokeProcessWithOutput";
}

CQVRInvokeProcessWithOutput::CQVRInvokeProcessWithOutput(QVRDataModelManager* dataModelManager,
                                                         const std::vector<CQVRModuleDetail*>& modules,
                                                         unsigned long threadCount, bool raisedPriority,
                                                         unsigned int timeoutSeconds)
    : m_pDataModelManager(dataModelManager),
      m_modules(modules),
      m_threadCount(threadCount),
      m_pThreadPool(nullptr),
      m_poolReady(false),
      m_timeoutSeconds(timeoutSeconds) {
    if (threadCount == 0) return;
    m_pThreadPool = new (std::nothrow) QVRCThreadPool();
    if (m_pThreadPool != nullptr) m_poolReady = m_pThreadPool->Initalize(threadCount, raisedPriority);
}

CQVRInvokeProcessWithOutput::~CQVRInvokeProcessWithOutput() {
    // The pool joins its workers before the tasks they may still use are freed.
    delete m_pThreadPool;
    FreeTasks();
}

bool CQVRInvokeProcessWithOutput::Process() {
    if (!m_poolReady) return false;
    if (m_pThreadPool->GetStartedWorkerCount() == 0) {
        ReportUnrunnable();
        return true;
    }
    try {
        m_tasks.reserve(m_tasks.size() + m_modules.size());  // so keeping a task cannot throw
        for (CQVRModuleDetail* module : m_modules) {
            IQVRInvokerTask* task = nullptr;
            if (module != nullptr && module->type == "lib") {
                task = new CQVRInvokerTaskLibrary(m_pDataModelManager, module);
            } else if (module != nullptr && module->type == "cli") {
                task = new CQVRInvokerTaskExe(m_pDataModelManager, module, m_timeoutSeconds);
            }
            if (task != nullptr) m_tasks.push_back(task);
            m_pThreadPool->AddToThreadPool(task);
        }
    }
    QVR_INVOKER_CATCH(kSourcePath, "Process")
    return true;
}

bool CQVRInvokeProcessWithOutput::EndProcess() {
    if (m_pThreadPool == nullptr) return true;
    bool joined = false;
    try {
        joined = m_pThreadPool->JoinToThreadPool();
    }
    QVR_INVOKER_CATCH(kSourcePath, "EndProcess")
    // Only once no worker is left may the tasks go.
    if (m_pThreadPool->IsDeinitialized() || m_pThreadPool->GetThreadCount() == 0) FreeTasks();
    return joined;
}

void CQVRInvokeProcessWithOutput::ReportUnrunnable() {
    // No thread could be created to run them: each module still gets its entry,
    // the failure an empty output stands for, so none goes missing unnoticed.
    if (m_pDataModelManager == nullptr) return;
    try {
        for (CQVRModuleDetail* module : m_modules) {
            if (module == nullptr || module->type != "cli") continue;
            std::string identity = module->configuredDir;
            std::string output;
            m_pDataModelManager->WriteData(identity, output);
        }
    }
    QVR_INVOKER_CATCH(kSourcePath, "Process")
}

void CQVRInvokeProcessWithOutput::FreeTasks() {
    for (IQVRInvokerTask* task : m_tasks) delete task;
    m_tasks.clear();
}

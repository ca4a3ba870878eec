#include "CQVRICInvoker.h"

#include <new>

#include "CQVRBadAllocException.h"
#include "CQVRICException.h"
#include "CQVRInvokeOnlyProcess.h"
#include "CQVRInvokeProcessWithOutput.h"
#include "QVRDataModelManager.h"
#include "QVRInvokerFrames.h"

namespace {
const char kSourcePath[] = "qvr_ModularIC/Invoker/src/CQVRICInvoker";
const size_t kPhaseCount = 5;
}  // namespace

CQVRICInvoker::CQVRICInvoker(const QVRArgumentList* argumentList, QVRDataModelManager* dataModelManager,
                             CQVRModuleList* moduleList, unsigned int timeoutSeconds)
    : m_pArgumentList(argumentList),
      m_pDataModelManager(dataModelManager),
      m_pModuleList(moduleList),
      m_totalInvComponents(0),
      m_pInvokers(new std::vector<IQVRModuleInvoker*>(kPhaseCount, nullptr)),
      m_timeoutSeconds(timeoutSeconds) {
    try {
        InitModuleInvoker();
        WriteInitProgress();
    } catch (...) {
        // No destructor runs for a half-built object: stop the pools made so far.
        DestroyInvokers();
        throw;
    }
}

CQVRICInvoker::~CQVRICInvoker() { DestroyInvokers(); }

void CQVRICInvoker::DestroyInvokers() {
    if (m_pInvokers == nullptr) return;
    for (IQVRModuleInvoker*& invoker : *m_pInvokers) {
        delete invoker;
        invoker = nullptr;
    }
    delete m_pInvokers;
    m_pInvokers = nullptr;
}

const CQVRModuleList& CQVRICInvoker::Modules() const {
    static const CQVRModuleList empty;
    return m_pModuleList != nullptr ? *m_pModuleList : empty;
}

IQVRModuleInvoker* CQVRICInvoker::GetModuleInvoker(QVR_IC_INVOKER_TASKS task) const {
    if (m_pInvokers == nullptr || static_cast<size_t>(task) >= m_pInvokers->size()) return nullptr;
    return (*m_pInvokers)[task];
}

void CQVRICInvoker::ComputeThreadBudget(unsigned long priorityCount, unsigned long parallelCount,
                                        unsigned long serialCount, unsigned long& priorityThreads,
                                        unsigned long& parallelThreads, unsigned long& serialThreads) {
    serialThreads = serialCount > 0 ? 1 : 0;
    // One thread of the fixed budget belongs to the serial phase when it has modules.
    const unsigned long budget = serialCount > 0 ? kThreadBudget - 1 : kThreadBudget;
    if (priorityCount + parallelCount <= budget) {
        priorityThreads = priorityCount;
        parallelThreads = parallelCount;
    } else if (priorityCount < budget) {
        priorityThreads = priorityCount;
        parallelThreads = budget - priorityCount;
    } else {
        parallelThreads = parallelCount < 2 ? parallelCount : 2;
        priorityThreads = budget - parallelThreads;
    }
}

unsigned long CQVRICInvoker::FindNumThreadsPerInvoker(unsigned long& priorityThreads,
                                                      unsigned long& parallelThreads,
                                                      unsigned long& serialThreads) {
    const CQVRModuleList& modules = Modules();
    const unsigned long p = modules.GetSizePriorityList();
    const unsigned long m = modules.GetSizeModuleList();
    const unsigned long s = modules.GetSizeSerialRunModuleList();
    m_totalInvComponents = p + m + s;
    ComputeThreadBudget(p, m, s, priorityThreads, parallelThreads, serialThreads);
    const unsigned long budget = s > 0 ? kThreadBudget - 1 : kThreadBudget;
    return p >= budget ? parallelThreads : p + m;
}

void CQVRICInvoker::InitModuleInvoker() {
    try {
        unsigned long priorityThreads = 0;
        unsigned long parallelThreads = 0;
        unsigned long serialThreads = 0;
        FindNumThreadsPerInvoker(priorityThreads, parallelThreads, serialThreads);
        const CQVRModuleList& modules = Modules();
        InitTask(QVR_IC_INVOKER_PRE_INSTALL, modules.GetPreInstallList(), 0, false);
        InitTask(QVR_IC_INVOKER_PRIORITY, modules.GetPriorityInstallList(), priorityThreads, true);
        InitTask(QVR_IC_INVOKER_PARALLEL, modules.GetModuleList(), parallelThreads, false);
        InitTask(QVR_IC_INVOKER_SERIAL, modules.GetSerialRunModuleList(), serialThreads, false);
        InitTask(QVR_IC_INVOKER_POST_INSTALL, modules.GetPostInstallList(), 0, false);
    }
    QVR_INVOKER_CATCH(kSourcePath, "InitModuleInvoker")
}

IQVRModuleInvoker* CQVRICInvoker::NewOnlyProcessInvoker(const std::vector<CQVRModuleDetail*>& modules) {
    return new (std::nothrow) CQVRInvokeOnlyProcess(m_pDataModelManager, modules, m_timeoutSeconds);
}

IQVRModuleInvoker* CQVRICInvoker::NewOutputInvoker(const std::vector<CQVRModuleDetail*>& modules,
                                                   unsigned long threadCount, bool raisedPriority) {
    return new (std::nothrow) CQVRInvokeProcessWithOutput(m_pDataModelManager, modules, threadCount,
                                                          raisedPriority, m_timeoutSeconds);
}

void CQVRICInvoker::InitTask(QVR_IC_INVOKER_TASKS task, const std::vector<CQVRModuleDetail*>& modules,
                             unsigned long threadCount, bool raisedPriority) {
    try {
        IQVRModuleInvoker* invoker = nullptr;
        switch (task) {
            case QVR_IC_INVOKER_PRIORITY:
            case QVR_IC_INVOKER_PARALLEL:
            case QVR_IC_INVOKER_SERIAL:
                invoker = NewOutputInvoker(modules, threadCount, raisedPriority);
                if (invoker == nullptr) {
                    throw CQVRBadAllocException("Unable to create memory for \t\t\t\tModule Invoker Object.");
                }
                break;
            case QVR_IC_INVOKER_PRE_INSTALL:
            case QVR_IC_INVOKER_POST_INSTALL:
                invoker = NewOnlyProcessInvoker(modules);
                if (invoker == nullptr) {
                    throw CQVRBadAllocException(
                        "Unable to create memory for \t\t\tPre/Post Module Invoker Object.");
                }
                break;
            default:
                return;
        }
        IQVRModuleInvoker*& slot = (*m_pInvokers)[task];
        delete slot;
        slot = invoker;
    }
    QVR_INVOKER_CATCH(kSourcePath, "InitTask")
}

void CQVRICInvoker::WriteInitProgress() {
    try {
        if (m_pDataModelManager != nullptr) {
            m_pDataModelManager->SetTotalInvComponents(static_cast<int>(m_totalInvComponents));
        }
    }
    QVR_INVOKER_CATCH(kSourcePath, "WriteInitProgress")
}

unsigned int CQVRICInvoker::ProcessInventory() {
    try {
        std::vector<IQVRModuleInvoker*>& invokers = *m_pInvokers;
        // Pre-install runs to completion before any pooled module starts; the
        // three pooled phases then run side by side; post-install starts only
        // after all of them have ended.
        if (invokers[QVR_IC_INVOKER_PRE_INSTALL] != nullptr) invokers[QVR_IC_INVOKER_PRE_INSTALL]->Process();
        for (QVR_IC_INVOKER_TASKS task :
             {QVR_IC_INVOKER_PRIORITY, QVR_IC_INVOKER_PARALLEL, QVR_IC_INVOKER_SERIAL}) {
            if (invokers[task] != nullptr) invokers[task]->Process();
        }
        for (QVR_IC_INVOKER_TASKS task :
             {QVR_IC_INVOKER_PRIORITY, QVR_IC_INVOKER_PARALLEL, QVR_IC_INVOKER_SERIAL}) {
            if (invokers[task] != nullptr) invokers[task]->EndProcess();
        }
        if (invokers[QVR_IC_INVOKER_POST_INSTALL] != nullptr)
            invokers[QVR_IC_INVOKER_POST_INSTALL]->Process();
    }
    QVR_INVOKER_CATCH(kSourcePath, "ProcessInventory")
    return 0;
}

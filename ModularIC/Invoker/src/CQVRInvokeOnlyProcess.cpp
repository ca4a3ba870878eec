#include "CQVRInvokeOnlyProcess.h"

#include <new>

#include "CQVRBadAllocException.h"
#include "CQVRICException.h"
#include "QVRInvokerFrames.h"

namespace {
const char kSourcePath[] = "qvr_ModularIC/Invoker/src/CQVRInvokeOnlyProcess";
}

CQVRInvokeOnlyProcess::CQVRInvokeOnlyProcess(QVRDataModelManager* dataModelManager,
                                             const std::vector<CQVRModuleDetail*>& modules,
                                             unsigned int timeoutSeconds)
    : m_pDataModelManager(dataModelManager), m_modules(modules), m_timeoutSeconds(timeoutSeconds) {}

bool CQVRInvokeOnlyProcess::Process() {
    try {
        for (CQVRModuleDetail* module : m_modules) {
            if (module == nullptr) continue;
            QVRCProcess process(module->workingDir, module->commandLine, m_timeoutSeconds, false, false);
            process.Execute();
        }
    }
    QVR_INVOKER_CATCH(kSourcePath, "Process")
    return true;
}

bool CQVRInvokeOnlyProcess::EndProcess() { return true; }

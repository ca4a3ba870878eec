#include "CQVRInvokerTaskExe.h"

#include <new>

#include "CQVRBadAllocException.h"
#include "CQVRICException.h"
#include "QVRDataModelManager.h"
#include "QVRInvokerFrames.h"

namespace {
const char kSourcePath[] = "qvr_ModularIC/Invoker/src/CQVRInvokerTaskExecutable";
}

CQVRInvokerTaskExe::CQVRInvokerTaskExe(QVRDataModelManager* dataModelManager, CQVRModuleDetail* module,
                                       unsigned int timeoutSeconds)
    : m_pDataModelManager(dataModelManager), m_pModule(module), m_timeoutSeconds(timeoutSeconds) {}

void CQVRInvokerTaskExe::Process() {
    if (m_pModule == nullptr) return;
    try {
        QVRCProcess process(m_pModule->workingDir, m_pModule->commandLine, m_timeoutSeconds, true, true);
        process.Execute();
        // Also after a failed start or a time-out: the empty output becomes the
        // module's failure entry.
        std::string identity = m_pModule->configuredDir;
        std::string output = process.TakeOutput();
        if (m_pDataModelManager != nullptr) m_pDataModelManager->WriteData(identity, output);
    }
    QVR_INVOKER_CATCH(kSourcePath, "Process")
}

#include "CQVRInvokeOnlyProcess.h"

#include <new>

#include "CQVRBadAllocException.h"
#include "CQVRICException.h"

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
    } catch (CQVRICException& e) {
        e.AddStackTrace(kSourcePath, __LINE__, "Process");
        throw;
    } catch (CQVRBadAllocException&) {
        throw;  // already carries its place
    } catch (std::bad_alloc& e) {
        throw CQVRBadAllocException::FromBadAlloc(e, kSourcePath, __LINE__, "Process");
    }
    return true;
}

bool CQVRInvokeOnlyProcess::EndProcess() { return true; }

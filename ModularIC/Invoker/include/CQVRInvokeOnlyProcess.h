#ifndef CQVRINVOKEONLYPROCESS_H
#define CQVRINVOKEONLYPROCESS_H

#include <vector>

#include "CQVRModuleDetail.h"
#include "IQVRModuleInvoker.h"
#include "QVRCProcess.h"

class QVRDataModelManager;

// Runs a phase's modules one after another on the caller's thread, without
// capturing their output (pre-install and post-install phases).
class CQVRInvokeOnlyProcess : public IQVRModuleInvoker {
public:
    // Both are borrowed; the list must outlive the invoker.
    CQVRInvokeOnlyProcess(QVRDataModelManager* dataModelManager,
                          const std::vector<CQVRModuleDetail*>& modules,
                          unsigned int timeoutSeconds = QVR_MODULE_TIMEOUT_SECONDS);

    // Runs each module to its end or its time limit, in list order. True.
    bool Process() override;
    // Nothing to wait for. True.
    bool EndProcess() override;

private:
    [[maybe_unused]] QVRDataModelManager* m_pDataModelManager;  // pre- and post-install output is not kept
    const std::vector<CQVRModuleDetail*>& m_modules;
    unsigned int m_timeoutSeconds;
};

#endif

#ifndef CQVRINVOKERTASKEXE_H
#define CQVRINVOKERTASKEXE_H

#include <string>

#include "CQVRModuleDetail.h"
#include "IQVRInvokerTask.h"
#include "QVRCProcess.h"

class QVRDataModelManager;

// Runs one executable module on a pool thread and hands its identity and
// captured output (empty when it failed or overran) to the data model manager.
class CQVRInvokerTaskExe : public IQVRInvokerTask {
public:
    // Both are borrowed.
    CQVRInvokerTaskExe(QVRDataModelManager* dataModelManager, CQVRModuleDetail* module,
                       unsigned int timeoutSeconds = QVR_MODULE_TIMEOUT_SECONDS);

    void Process() override;

private:
    QVRDataModelManager* m_pDataModelManager;
    CQVRModuleDetail* m_pModule;
    std::string m_unused;
    unsigned int m_timeoutSeconds;
};

#endif

#ifndef CQVRINVOKERTASKLIBRARY_H
#define CQVRINVOKERTASKLIBRARY_H

#include "CQVRModuleDetail.h"
#include "IQVRInvokerTask.h"

class QVRDataModelManager;

// A library-type module: accepted in the configuration, produces no inventory.
class CQVRInvokerTaskLibrary : public IQVRInvokerTask {
public:
    // Both are borrowed.
    CQVRInvokerTaskLibrary(QVRDataModelManager* dataModelManager, CQVRModuleDetail* module);

    // Does nothing.
    void Process() override;

private:
    [[maybe_unused]] QVRDataModelManager* m_pDataModelManager;
    [[maybe_unused]] CQVRModuleDetail* m_pModule;
};

#endif

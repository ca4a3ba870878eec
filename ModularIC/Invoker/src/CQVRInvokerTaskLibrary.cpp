#include "CQVRInvokerTaskLibrary.h"

CQVRInvokerTaskLibrary::CQVRInvokerTaskLibrary(QVRDataModelManager* dataModelManager,
                                               CQVRModuleDetail* module)
    : m_pDataModelManager(dataModelManager), m_pModule(module) {}

void CQVRInvokerTaskLibrary::Process() {}

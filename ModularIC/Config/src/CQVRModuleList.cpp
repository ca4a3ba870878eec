#include "CQVRModuleList.h"

CQVRModuleList::~CQVRModuleList() {
    ClearModuleList(m_preInstall);
    ClearModuleList(m_priority);
    ClearModuleList(m_modules);
    ClearModuleList(m_serialRun);
    ClearModuleList(m_postInstall);
}

void CQVRModuleList::ClearModuleList(List& list) {
    for (CQVRModuleDetail* module : list) delete module;
    list.clear();
}

#include "CSharedMemReader.h"

#include "IQVRShmApi.h"
#include "QVRSharedMemGlobals.h"

namespace {
// What a caller reads when the segment is out of reach. Reset before each use
// so a caller that wrote through the pointer does not leak into the next read.
int g_noSegment[2] = {0, 0};
}  // namespace

int* CSharedMemReader::ReadData() {
    IQVRShmApi* api = &m_api;
    InvSMID = api->Get(QVR_PROGRESS_SHM_KEY, QVR_PROGRESS_SHM_SIZE, QVR_PROGRESS_SHM_FLAGS);
    eVKReader = nullptr;
    if (InvSMID != -1) {
        void* address = api->Attach(InvSMID);
        if (address != reinterpret_cast<void*>(-1) && address != nullptr)
            eVKReader = static_cast<int*>(address);
    }
    if (eVKReader != nullptr) return eVKReader;
    g_noSegment[0] = 0;
    g_noSegment[1] = 0;
    return g_noSegment;
}

void CSharedMemReader::CleanUP() {
    IQVRShmApi* api = &m_api;
    if (eVKReader != nullptr) api->Detach(eVKReader);
    eVKReader = nullptr;
    if (InvSMID != -1) api->Remove(InvSMID);
    InvSMID = -1;
}

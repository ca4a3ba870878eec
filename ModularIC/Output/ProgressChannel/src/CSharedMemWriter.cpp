#include "CSharedMemWriter.h"

#include <cstdint>

#include "IQVRShmApi.h"
#include "QVRSharedMemGlobals.h"

bool CSharedMemWriter::WriteToSharedMem(int total, int completed) {
    IQVRShmApi* api = &m_api;
    const int id = api->Get(QVR_PROGRESS_SHM_KEY, QVR_PROGRESS_SHM_SIZE, QVR_PROGRESS_SHM_FLAGS);
    if (id == -1) return false;
    void* address = api->Attach(id);
    if (address == reinterpret_cast<void*>(-1) || address == nullptr) return false;
    int32_t* counters = static_cast<int32_t*>(address);
    eVKInvRefCount = static_cast<int*>(address);
    counters[0] = total;
    counters[1] = completed;
    return true;
}

bool CSharedMemWriter::RemoveSegment() {
    IQVRShmApi* api = &m_api;
    const int id = api->Get(QVR_PROGRESS_SHM_KEY, QVR_PROGRESS_SHM_SIZE, 0);
    return id == -1 || api->Remove(id) == 0;
}

#include <sys/shm.h>

#include <atomic>

#include "IQVRShmApi.h"
#include "QVRSharedMemGlobals.h"

int InvSMID = -1;
int* eVKReader = nullptr;
int* eVKInvRefCount = nullptr;

namespace {

class QVRRealShmApi : public IQVRShmApi {
public:
    int Get(key_t key, std::size_t size, int flags) override { return shmget(key, size, flags); }
    void* Attach(int id) override { return shmat(id, nullptr, 0); }
    int Detach(const void* address) override { return shmdt(address); }
    int Remove(int id) override { return shmctl(id, IPC_RMID, nullptr); }
};

QVRRealShmApi g_realApi;
std::atomic<IQVRShmApi*> g_api{&g_realApi};

}  // namespace

IQVRShmApi* QVRGetShmApi() { return g_api.load(); }

IQVRShmApi* QVRSetShmApi(IQVRShmApi* api) { return g_api.exchange(api != nullptr ? api : &g_realApi); }

#include <sys/shm.h>

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

}  // namespace

IQVRShmApi& IQVRShmApi::Real() {
    static QVRRealShmApi real;
    return real;
}

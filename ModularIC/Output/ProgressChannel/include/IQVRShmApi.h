#ifndef IQVRSHMAPI_H
#define IQVRSHMAPI_H

#include <sys/types.h>

#include <cstddef>

// The System V shared-memory calls the progress channel makes, behind one seam
// so tests can fake them. The real implementation passes each call straight to
// the C library; the channel's reader and writer take one in their constructors.
class IQVRShmApi {
public:
    virtual ~IQVRShmApi() = default;
    // shmget: the segment identifier, or -1 with errno set.
    virtual int Get(key_t key, std::size_t size, int flags) = 0;
    // shmat(id, system-chosen address, read-write): the address, or (void*)-1.
    virtual void* Attach(int id) = 0;
    // shmdt: 0, or -1.
    virtual int Detach(const void* address) = 0;
    // shmctl(id, IPC_RMID): 0, or -1.
    virtual int Remove(int id) = 0;

    static IQVRShmApi& Real();
};

#endif

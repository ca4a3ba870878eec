#ifndef QVRSHAREDMEMGLOBALS_H
#define QVRSHAREDMEMGLOBALS_H

#include <sys/ipc.h>
#include <sys/types.h>

// The progress segment: System V key 0x94D553DF, two native 32-bit counters
// (total, completed), created by whichever side comes first.
#define QVR_PROGRESS_SHM_KEY (static_cast<key_t>(0x94D553DFu))
#define QVR_PROGRESS_SHM_SIZE 8
#define QVR_PROGRESS_SHM_FLAGS (IPC_CREAT | 0666)

// The reader's segment identifier (-1 until ReadData obtained one).
extern int InvSMID;
// The reader's attached address (null while not attached).
extern int* eVKReader;
// The writer's most recent attached address (null before the first write).
extern int* eVKInvRefCount;

#endif

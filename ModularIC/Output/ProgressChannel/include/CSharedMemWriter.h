#ifndef CSHAREDMEMWRITER_H
#define CSHAREDMEMWRITER_H

#include "IQVRShmApi.h"

// Publishes a running collection's two progress counters in the System V
// segment with key 0x94D553DF (8 bytes: total, completed). Callers serialise
// their calls (the raw data store does so under its mutex).
class CSharedMemWriter {
public:
    // api, borrowed, makes the shared-memory calls.
    explicit CSharedMemWriter(IQVRShmApi& api = IQVRShmApi::Real()) : m_api(api) {}
    // Creates the segment if needed, attaches it anew (the address goes to
    // eVKInvRefCount; attachments are never detached and end with the process)
    // and stores both counters. False when the segment cannot be obtained or
    // attached; nothing is stored then.
    bool WriteToSharedMem(int total, int completed);
    // Removes the segment, when there is one: for a run that ends before its
    // modules did, whose counters would otherwise outlive it. False when a
    // segment exists and cannot be removed.
    bool RemoveSegment();

private:
    IQVRShmApi& m_api;
};

#endif

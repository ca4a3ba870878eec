#ifndef CSHAREDMEMREADER_H
#define CSHAREDMEMREADER_H

#include "IQVRShmApi.h"

// Reads the progress counters a running collection publishes.
class CSharedMemReader {
public:
    // api, borrowed, makes the shared-memory calls.
    explicit CSharedMemReader(IQVRShmApi& api = IQVRShmApi::Real()) : m_api(api) {}
    // Creates the segment if needed (identifier kept in InvSMID), attaches it
    // (address kept in eVKReader) and returns the two counters (total,
    // completed). Never null: when the segment cannot be obtained or attached,
    // eVKReader stays null and the result points at a pair of zeros, which reads
    // as "no collection running".
    int* ReadData();
    // Detaches eVKReader when attached and removes the segment InvSMID names,
    // when there is one. Both globals are reset.
    void CleanUP();

private:
    IQVRShmApi& m_api;
};

#endif

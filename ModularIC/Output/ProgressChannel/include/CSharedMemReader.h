#ifndef CSHAREDMEMREADER_H
#define CSHAREDMEMREADER_H

// Reads the progress counters a running collection publishes.
class CSharedMemReader {
public:
    // Creates the segment if needed, attaches it and returns the two counters
    // (total, completed).
    int* ReadData();
    // Detaches and removes the segment.
    void CleanUP();
};

#endif

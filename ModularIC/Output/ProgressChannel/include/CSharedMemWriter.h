#ifndef CSHAREDMEMWRITER_H
#define CSHAREDMEMWRITER_H

// Publishes a running collection's two progress counters in the System V
// segment with key 0x94D553DF (8 bytes: total, completed).
class CSharedMemWriter {
public:
    CSharedMemWriter() {}
    // Creates the segment if needed, attaches it and stores both counters.
    // False when the segment cannot be obtained.
    bool WriteToSharedMem(int total, int completed);
};

#endif

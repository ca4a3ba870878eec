#ifndef QVRTEMPORARYFILES_H
#define QVRTEMPORARYFILES_H

#include <string>

// The temporary files documents are being written to, process-wide, so that a
// run ended by a signal leaves none behind. A file is recorded from the moment
// it is created until it is renamed into place or removed. Thread-safe.
class QVRTemporaryFiles {
public:
    // Creates a file from a mkostemp pattern (close-on-exec) and records it;
    // the pattern becomes its name. The descriptor, or -1 with errno set.
    static int Create(std::string& pattern);
    // Gives the recorded file its final name and forgets it. False with errno.
    static bool Rename(const std::string& name, const std::string& final);
    // Removes the recorded file and forgets it; errno is kept.
    static void Remove(const std::string& name);
    // For a process about to end: removes every recorded file and holds every
    // later call of this class until the process is gone.
    static void RemoveAllBeforeExit();
};

#endif

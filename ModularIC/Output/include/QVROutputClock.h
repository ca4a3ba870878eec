#ifndef QVROUTPUTCLOCK_H
#define QVROUTPUTCLOCK_H

#include <ctime>
#include <string>

// The clock behind the "%F %T" time stamps of the inventory and progress
// documents. The source is a seam: tests install a fixed time so that whole
// documents can be compared byte for byte.
class QVROutputClock {
public:
    typedef std::time_t (*Source)();

    // Installs a source; null restores the system clock. Returns the previous
    // source (null when it was the system clock).
    static Source SetSource(Source source);
    // The current time of the installed source.
    static std::time_t Now();
    // The current time as local time in the form "%F %T" (YYYY-MM-DD HH:MM:SS).
    static std::string Timestamp();
    // The given time as local time in the form "%F %T".
    static std::string Format(std::time_t when);
};

#endif

#ifndef BQMTIME_H
#define BQMTIME_H

#include "BQMString.h"

// A point in time: whole seconds since the Unix epoch, or "not set". Calendar
// conversions use the process's local time zone and the C locale's names.
class BQMTime {
public:
    // Not set.
    BQMTime();
    explicit BQMTime(unsigned long long secondsSinceEpoch);

    static BQMTime CurrentTime();

    bool IsValid() const { return mValid; }
    unsigned long long GetValue() const { return mValue; }

    // The date as strftime "%A, %B %d, %G" (the year is the ISO week-based year, so
    // the first days of January may show the previous year). localTime false renders
    // UTC. False, with out emptied, when the time is not set.
    bool DateToString(BQMString& out, bool localTime = true) const;
    // The time of day as strftime "%I:%M%p", e.g. "03:07PM". False when not set.
    bool TimeToString(BQMString& out, bool localTime = true) const;

    // Sets the local time given by the parts (month 1-12), read through the text form
    // "%Y-%m-%d %H:%M:%S". False, leaving the value unchanged, when a part is out of
    // range or names a date that does not exist (31 February) or lies before 1970.
    bool SetTime(int year, int month, int day, int hour, int minute, int second);
    // The local time's parts (month 1-12). False when not set.
    bool GetTime(int& year, int& month, int& day, int& hour, int& minute, int& second) const;

    bool operator==(const BQMTime& other) const { return mValue == other.mValue; }
    bool operator!=(const BQMTime& other) const { return mValue != other.mValue; }
    bool operator<(const BQMTime& other) const { return mValue < other.mValue; }
    bool operator>(const BQMTime& other) const { return mValue > other.mValue; }

private:
    bool Format(const char* format, BQMString& out, bool localTime) const;

    unsigned long long mValue;
    bool mValid;
};

#endif

#include "BQMTime.h"

#include <cstdio>
#include <cstring>
#include <ctime>

BQMTime::BQMTime() : mValue(0), mValid(false) {}

BQMTime::BQMTime(unsigned long long secondsSinceEpoch) : mValue(secondsSinceEpoch), mValid(true) {}

BQMTime BQMTime::CurrentTime() {
    const std::time_t now = std::time(nullptr);
    return now < 0 ? BQMTime() : BQMTime(static_cast<unsigned long long>(now));
}

bool BQMTime::Format(const char* format, BQMString& out, bool localTime) const {
    out.Clear();
    if (!mValid) return false;
    const std::time_t value = static_cast<std::time_t>(mValue);
    struct tm parts;
    if ((localTime ? localtime_r(&value, &parts) : gmtime_r(&value, &parts)) == nullptr) return false;
    char buffer[128];
    const std::size_t written = std::strftime(buffer, sizeof buffer, format, &parts);
    if (written == 0) return false;
    out = BQMString(std::string(buffer, written));
    return true;
}

bool BQMTime::DateToString(BQMString& out, bool localTime) const {
    return Format("%A, %B %d, %G", out, localTime);
}

bool BQMTime::TimeToString(BQMString& out, bool localTime) const { return Format("%I:%M%p", out, localTime); }

bool BQMTime::SetTime(int year, int month, int day, int hour, int minute, int second) {
    if (year < 1970 || year > 9999) return false;
    char text[64];
    std::snprintf(text, sizeof text, "%04d-%02d-%02d %02d:%02d:%02d", year, month, day, hour, minute, second);
    struct tm parts;
    std::memset(&parts, 0, sizeof parts);
    const char* end = strptime(text, "%Y-%m-%d %H:%M:%S", &parts);
    if (end == nullptr || *end != '\0') return false;
    parts.tm_isdst = -1;
    struct tm wanted = parts;
    const std::time_t value = std::mktime(&parts);
    if (value == static_cast<std::time_t>(-1) || value < 0) return false;
    // mktime rolls 31 February over into March; such a date does not exist.
    if (parts.tm_year != wanted.tm_year || parts.tm_mon != wanted.tm_mon || parts.tm_mday != wanted.tm_mday) {
        return false;
    }
    mValue = static_cast<unsigned long long>(value);
    mValid = true;
    return true;
}

bool BQMTime::GetTime(int& year, int& month, int& day, int& hour, int& minute, int& second) const {
    if (!mValid) return false;
    const std::time_t value = static_cast<std::time_t>(mValue);
    struct tm parts;
    if (localtime_r(&value, &parts) == nullptr) return false;
    year = parts.tm_year + 1900;
    month = parts.tm_mon + 1;
    day = parts.tm_mday;
    hour = parts.tm_hour;
    minute = parts.tm_min;
    second = parts.tm_sec;
    return true;
}

#include "QVROutputClock.h"

namespace {
QVROutputClock::Source g_source = nullptr;
}

QVROutputClock::Source QVROutputClock::SetSource(Source source) {
    Source previous = g_source;
    g_source = source;
    return previous;
}

std::time_t QVROutputClock::Now() { return g_source != nullptr ? g_source() : std::time(nullptr); }

std::string QVROutputClock::Timestamp() { return Format(Now()); }

std::string QVROutputClock::Format(std::time_t when) {
    std::tm local{};
    if (localtime_r(&when, &local) == nullptr) return std::string();
    char text[64];
    const std::size_t length = std::strftime(text, sizeof(text), "%F %T", &local);
    return std::string(text, length);
}

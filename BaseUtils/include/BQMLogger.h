#ifndef BQMLOGGER_H
#define BQMLOGGER_H

#include <atomic>
#include <cstdio>

#include "BQMLock.h"
#include "BQMLoggingOptions.h"
#include "BQMString.h"

// Levels of BQMLogger::Log; the names printed are "NONE", "FATAL", "ERROR",
// "WARN", "INFO", "TRACE", "DEBUG".
enum BQMLogLevel {
    BQM_LOG_NONE = 0,
    BQM_LOG_FATAL = 1,
    BQM_LOG_ERROR = 2,
    BQM_LOG_WARN = 3,
    BQM_LOG_INFO = 4,
    BQM_LOG_TRACE = 5,
    BQM_LOG_DEBUG = 6
};

// The levelled logger of the base and IPMI libraries: every line goes to the internal
// log and selected lines to the user log. Silent until Initialize has opened both.
// All members are static; every operation is serialised by the one lock object.
class BQMLogger {
public:
    // Opens the internal log and, unless the options show 0 levels in the user log, the
    // user log: an existing file is appended to ("a+"), a missing one created ("w"). A
    // log already open stays as it is. A failed open is reported on standard error. The
    // options are kept. Returns true.
    static bool Initialize(const BQMLoggingOptions& options);

    // Writes one line, printf-style. Does nothing unless both logs are open. Every line
    // reaches the internal log. The user log gets it only when level <= N (N, the levels
    // shown in the user log, not 0) and the level is TRACE exactly when N is 5: with N 5
    // only TRACE lines, otherwise everything up to N but TRACE. A TRACE line switches the
    // user log to standard error for good (until Terminate). A newline is added unless
    // format already ends in one.
    static void Log(const BQMString& file, const BQMString& function, long long line, int level,
                    const char* format, ...) __attribute__((format(printf, 5, 6)));

    // Closes both logs (never standard error). Returns true.
    static bool Terminate();

    // The logger's lock; created on first use and never freed.
    static BQMLock* GetLockObject();

    // True while both logs are open; cheap, for callers that skip building arguments.
    static bool IsEnabled();

private:
    static std::FILE* mInternalLogFile;
    static std::FILE* mUserLogFile;
    static BQMLoggingOptions mOptions;
    static std::atomic<bool> mEnabled;
};

// Logs with the caller's file, function and line. Evaluates only
// BQMLogger::IsEnabled() (not level or arguments) while logging is off.
#define BQM_LOG(level, ...)                                                                                  \
    do {                                                                                                     \
        if (BQMLogger::IsEnabled()) {                                                                        \
            BQMLogger::Log(BQMString(__FILE__, BQMString::BQM_ENCODING_UTF8),                                \
                           BQMString(__func__, BQMString::BQM_ENCODING_UTF8), __LINE__, level, __VA_ARGS__); \
        }                                                                                                    \
    } while (0)

#endif

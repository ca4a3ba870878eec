#include "BQMLogger.h"

#include <cstdarg>
#include <cstring>
#include <string>

#include "BQMTime.h"

std::FILE* BQMLogger::mInternalLogFile = nullptr;
std::FILE* BQMLogger::mUserLogFile = nullptr;
BQMLoggingOptions BQMLogger::mOptions;
std::atomic<bool> BQMLogger::mEnabled(false);

namespace {

const char* const kLevelNames[] = {"NONE", "FATAL", "ERROR", "WARN", "INFO", "TRACE", "DEBUG"};

const char* LevelName(int level) {
    const int count = static_cast<int>(sizeof kLevelNames / sizeof kLevelNames[0]);
    return level >= 0 && level < count ? kLevelNames[level] : "?";
}

// Appends to an existing log and creates a missing one. Close-on-exec ("e") so
// that shell commands run by the library do not inherit the log.
std::FILE* OpenLog(const BQMFile& file) {
    const std::string path = file.GetPath().GetUTF8String();
    std::FILE* stream = std::fopen(path.c_str(), file.Exists() ? "a+e" : "we");
    if (stream == nullptr)
        std::fprintf(stderr, "Error in %s opening user log file: %s\n", "Initialize", path.c_str());
    return stream;
}

bool EndsInNewline(const char* format) {
    const std::size_t length = std::strlen(format);
    return length > 0 && format[length - 1] == '\n';
}

void WriteLine(std::FILE* stream, const char* prefixFormat, const std::string& application, int level,
               const std::string& date, const std::string& time, const std::string& function,
               const std::string& file, long long line, const char* format, va_list args) {
    std::fprintf(stream, prefixFormat, application.c_str(), LevelName(level), date.c_str(), time.c_str(),
                 function.c_str(), file.c_str(), line);
    std::vfprintf(stream, format, args);
    if (!EndsInNewline(format)) std::fputc('\n', stream);
    std::fflush(stream);
}

}  // namespace

BQMLock* BQMLogger::GetLockObject() {
    static BQMLock* const lock = new BQMLock();
    return lock;
}

bool BQMLogger::IsEnabled() { return mEnabled.load(std::memory_order_acquire); }

bool BQMLogger::Initialize(const BQMLoggingOptions& options) {
    BQMLockGuard guard(*GetLockObject());
    if (mInternalLogFile == nullptr) mInternalLogFile = OpenLog(options.GetInternalLogFile());
    if (mUserLogFile == nullptr && options.NumberOfLevelsToShowInUserLog() != 0) {
        mUserLogFile = OpenLog(options.GetUserLogFile());
    }
    mOptions = options;
    mEnabled.store(mInternalLogFile != nullptr && mUserLogFile != nullptr, std::memory_order_release);
    return true;
}

void BQMLogger::Log(const BQMString& file, const BQMString& function, long long line, int level,
                    const char* format, ...) {
    if (format == nullptr) format = "";
    BQMLockGuard guard(*GetLockObject());
    if (mInternalLogFile == nullptr || mUserLogFile == nullptr) return;

    const BQMTime now = BQMTime::CurrentTime();
    BQMString dateText, timeText;
    now.DateToString(dateText);
    now.TimeToString(timeText);
    const std::string date = dateText.GetUTF8String();
    const std::string time = timeText.GetUTF8String();
    const std::string application = mOptions.GetApplicationName().GetUTF8String();
    const std::string functionName = function.GetUTF8String();
    const std::string fileName = file.GetUTF8String();

    va_list args;
    va_start(args, format);
    va_list userArgs;
    va_copy(userArgs, args);
    WriteLine(mInternalLogFile, "%s %-5s : %s %s %-40s() %-30s:%3lld ", application, level, date, time,
              functionName, fileName, line, format, args);

    const int shown = mOptions.NumberOfLevelsToShowInUserLog();
    const bool isTrace = level == BQM_LOG_TRACE;
    if (shown != 0 && level <= shown && isTrace == (shown == BQM_LOG_TRACE)) {
        if (mUserLogFile == nullptr || isTrace) {
            // The user log file stays empty from here on; release it rather than leak it.
            if (mUserLogFile != nullptr && mUserLogFile != stderr) std::fclose(mUserLogFile);
            mUserLogFile = stderr;
        }
        WriteLine(mUserLogFile, "%s %-5s : %s %s %-40s() %-30s:%lld ", application, level, date, time,
                  functionName, fileName, line, format, userArgs);
    }
    va_end(userArgs);
    va_end(args);
}

bool BQMLogger::Terminate() {
    BQMLockGuard guard(*GetLockObject());
    mEnabled.store(false, std::memory_order_release);
    if (mUserLogFile != nullptr && mUserLogFile != stderr) std::fclose(mUserLogFile);
    mUserLogFile = nullptr;
    if (mInternalLogFile != nullptr) std::fclose(mInternalLogFile);
    mInternalLogFile = nullptr;
    return true;
}

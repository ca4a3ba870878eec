#ifndef CLOGGER_H
#define CLOGGER_H

#include <atomic>
#include <fstream>
#include <mutex>
#include <sstream>
#include <string>

// "baseutils.log": a process-wide name that neither logger uses.
extern const std::string strBaseUtilsLogFileName;
// "kpxdebuglog": the marker file whose presence in the current directory switches
// the IPMI library's logging on.
extern const std::string strEnableLogFileName;

// The collector's diagnostic log: time-stamped lines with source file and line.
// Disabled (every call a no-op) until Initialize opens a file; the collector
// itself never enables it. Thread-safe: module workers log concurrently.
class CLogger {
public:
    // The process's logger; further instances are independent and start disabled.
    static CLogger* GetInstance();
    CLogger();
    CLogger(const CLogger&) = delete;
    CLogger& operator=(const CLogger&) = delete;

    // Opens the file (truncating) on the first call. Returns the enabled flag as
    // it was before the call.
    bool Initialize(const std::string& file);

    // The part after the last "/".
    static std::string getFileName(const std::string& path);

    void log(const char* file, unsigned int line, const std::string& message);
    // Logs the stream's text and empties the stream (untouched while disabled).
    void log(const char* file, unsigned int line, std::ostringstream& message);

private:
    static std::atomic<CLogger*> m_ptrInstance;
    std::mutex m_mutex;  // the file and its name
    std::string m_fileName;
    std::ofstream m_stream;
    std::atomic<bool> m_enabled;
};

#endif

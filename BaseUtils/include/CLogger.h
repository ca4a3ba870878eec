#ifndef CLOGGER_H
#define CLOGGER_H

#include <fstream>
#include <sstream>
#include <string>

// The collector's diagnostic log: time-stamped lines with source file and line.
// Disabled (every call a no-op) until Initialize opens a file; the collector
// itself never enables it. Takes no lock.
class CLogger {
public:
    static CLogger* GetInstance();

    // Opens the file (truncating) on the first call. Returns the enabled flag as
    // it was before the call.
    bool Initialize(const std::string& file);

    // The part after the last "/".
    static std::string getFileName(const std::string& path);

    void log(const char* file, unsigned int line, const std::string& message);
    // Logs the stream's text and empties the stream (untouched while disabled).
    void log(const char* file, unsigned int line, std::ostringstream& message);

private:
    CLogger();

    static CLogger* m_ptrInstance;
    std::string m_fileName;
    std::ofstream m_stream;
    bool m_enabled;
};

#endif

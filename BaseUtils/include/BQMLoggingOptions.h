#ifndef BQMLOGGINGOPTIONS_H
#define BQMLOGGINGOPTIONS_H

#include "BQMFile.h"
#include "BQMString.h"

// What BQMLogger::Initialize opens and how much reaches the user log.
class BQMLoggingOptions {
public:
    BQMLoggingOptions() : mNumberOfSupportedLevels(0), mNumberOfLevelsToShowInUserLog(0) {}

    const BQMString& GetApplicationName() const { return mApplicationName; }
    void SetApplicationName(const BQMString& name) { mApplicationName = name; }
    int NumberOfSupportedLevels() const { return mNumberOfSupportedLevels; }
    void SetNumberOfSupportedLevels(int count) { mNumberOfSupportedLevels = count; }
    const BQMFile& GetUserLogFile() const { return mUserLogFile; }
    void SetUserLogFile(const BQMFile& file) { mUserLogFile = file; }
    const BQMFile& GetInternalLogFile() const { return mInternalLogFile; }
    void SetInternalLogFile(const BQMFile& file) { mInternalLogFile = file; }
    // 0 keeps the user log closed, which also keeps BQMLogger::Log silent.
    int NumberOfLevelsToShowInUserLog() const { return mNumberOfLevelsToShowInUserLog; }
    void SetNumberOfLevelsToShowInUserLog(int count) { mNumberOfLevelsToShowInUserLog = count; }

private:
    BQMString mApplicationName;
    int mNumberOfSupportedLevels;
    BQMFile mUserLogFile;
    BQMFile mInternalLogFile;
    int mNumberOfLevelsToShowInUserLog;
};

#endif

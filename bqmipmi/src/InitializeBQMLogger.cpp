#include "InitializeBQMLogger.h"

#include "BQMFile.h"
#include "BQMLogger.h"
#include "BQMLoggingOptions.h"
#include "BQMString.h"

bool InitializeBQMLogger() {
    BQMFile marker(BQMString("kpxdebuglog", BQMString::BQM_ENCODING_UTF8));
    if (!marker.Exists()) return BQMLogger::IsEnabled();
    BQMLoggingOptions options;
    options.SetApplicationName(BQMString("BQMIPMILibrary", BQMString::BQM_ENCODING_UTF8));
    options.SetNumberOfSupportedLevels(5);
    options.SetNumberOfLevelsToShowInUserLog(5);
    options.SetUserLogFile(BQMFile(BQMString("bqmipmi.log", BQMString::BQM_ENCODING_UTF8)));
    options.SetInternalLogFile(BQMFile(BQMString("bqmipmi_internal.log", BQMString::BQM_ENCODING_UTF8)));
    BQMLogger::Initialize(options);
    return BQMLogger::IsEnabled();
}

#include "QVRInvOutput.h"

#include <cstdio>
#include <ctime>

#include "QVRICVersion.h"
#include "QVRResultCodes.h"

namespace {

struct SResultMessage {
    unsigned int code;
    const char* message;  // null: no message
    bool withUsage;
};

const SResultMessage kResultMessages[] = {
    {QVR_RESULT_SUCCESS, nullptr, false},
    {QVR_RESULT_RECORDS_COLLECTED, nullptr, false},
    {QVR_RESULT_COMPLETE_FAILURE, "Complete failure of all inventory components during inventory collection.",
     false},
    {QVR_RESULT_ANOTHER_INSTANCE,
     "ERROR: Another instance of the Inventory Collector is currently active. Terminating\n", false},
    {QVR_RESULT_LOCK_ERROR, nullptr, false},
    {QVR_RESULT_INVALID_OPTION, "Invalid command line options are specified.", true},
    {QVR_RESULT_INVALID_LOG_FILE,
     "Log file either does not exist or is not writable. Provide a valid writable file for avoiding this "
     "error.",
     false},
    {QVR_RESULT_INVALID_CONFIG_FILE,
     "Configuration file either does not exist or is not readable or if it does not adhere to the "
     "schema.Providing a valid configuration file for avoiding this error code",
     true},
    {QVR_RESULT_INVALID_ENCODING, "Invalid Encoding option specified", true},
    {QVR_RESULT_REQUIRES_ARGUMENT, "One of the Option specified requires Argument", true},
    {QVR_RESULT_SHOULD_NOT_HAVE_ARGUMENT, "One of the Option specified should not have Argument", true},
    {QVR_RESULT_DEPENDENT_OPTION_MISSING, "One of the Command Line Option has dependency on other option",
     true},
    {QVR_RESULT_INVALID_OUTPUT_FORMAT, "Invalid OutPut Format specified", true},
    {QVR_RESULT_INVALID_ARGUMENT, "Option argument is Invalid\n", false},
    {QVR_RESULT_PROGRESS_WRITTEN, nullptr, false},
    {QVR_RESULT_NO_INSTANCE_ACTIVE, "No Instance of Inventory Collector is active \n", false},
    {QVR_RESULT_PROGRESS_FAILED, "Unable to Process Invnetory Collector Progress", false},
    {QVR_RESULT_INVALID_ARGUMENT_2, "Option argument is Invalid\n", false},
    {QVR_RESULT_INVALID_ARGUMENT_3, "Option argument is Invalid\n", false},
    {QVR_RESULT_OUTPUT_CLOSED, nullptr, false},
};

}  // namespace

void SetInvOutPut(unsigned int code, std::string programName) {
    for (const SResultMessage& entry : kResultMessages) {
        if (entry.code != code) continue;
        if (entry.message != nullptr) PrintError(entry.message);
        if (entry.withUsage) PrintHelpUsage(programName);
        return;
    }
    PrintHelpUsage(programName);
}

void PrintError(std::string text) {
    // The texts hold no conversions, so writing them as they are prints what a
    // format of them would, without handing a format to the C library.
    std::fputs(text.c_str(), stderr);
    std::fflush(stderr);
}

std::string GetCurrentDateAndTime() {
    const std::time_t now = std::time(nullptr);
    struct tm local;
    if (localtime_r(&now, &local) == nullptr) return std::string();
    char text[64] = {0};
    const std::size_t length = std::strftime(text, sizeof text, "%F %T", &local);
    return std::string(text, length);
}

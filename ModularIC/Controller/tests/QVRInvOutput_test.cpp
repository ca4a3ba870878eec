#include "QVRInvOutput.h"

#include <gtest/gtest.h>

#include <cstring>
#include <map>
#include <set>

#include "QVRICVersion.h"

namespace {

using namespace ::testing::internal;  // output capture

std::string Usage(const char* name) {
    char buffer[1024];
    std::snprintf(buffer, sizeof buffer, kQVRUsageFormat, name);
    return buffer;
}

TEST(QVRInvOutputTest, EveryCodePrintsItsMessageAndUsage) {
    const std::string invalid = "Option argument is Invalid\n";
    // clang-format off
    const std::map<unsigned int, std::string> messages = {
        {2, "Complete failure of all inventory components during inventory collection."},
        {3, "ERROR: Another instance of the Inventory Collector is currently active. Terminating\n"},
        {5, "Invalid command line options are specified."},
        {6, "Log file either does not exist or is not writable. Provide a valid writable file for avoiding "
            "this error."},
        {7, "Configuration file either does not exist or is not readable or if it does not adhere to the "
            "schema.Providing a valid configuration file for avoiding this error code"},
        {22, "Invalid Encoding option specified"}, {23, "One of the Option specified requires Argument"},
        {24, "One of the Option specified should not have Argument"},
        {25, "One of the Command Line Option has dependency on other option"},
        {32, "Invalid OutPut Format specified"}, {35, invalid}, {51, invalid}, {52, invalid},
        {49, "No Instance of Inventory Collector is active \n"},
        {50, "Unable to Process Invnetory Collector Progress"}};
    // clang-format on
    // Every other code, however large, prints the usage text alone.
    const std::set<unsigned int> withoutUsage = {0, 1, 2, 3, 4, 6, 35, 48, 49, 50, 51, 52};
    std::vector<unsigned int> codes = {99, 255, 4000000000u};
    for (unsigned int code = 0; code <= 60; ++code) codes.push_back(code);
    for (unsigned int code : codes) {
        const auto message = messages.find(code);
        CaptureStdout();
        CaptureStderr();
        SetInvOutPut(code, "tool");
        EXPECT_EQ(GetCapturedStdout(), withoutUsage.count(code) ? "" : Usage("tool")) << code;
        EXPECT_EQ(GetCapturedStderr(), message == messages.end() ? "" : message->second) << code;
    }
}

TEST(QVRInvOutputTest, UsageVersionAndErrorTexts) {
    EXPECT_EQ(std::strlen(kQVRUsageFormat), 688u);
    CaptureStdout();
    CaptureStderr();
    PrintHelpUsage("sorvik");
    PrintICVersion();
    PrintError("no line end 100%\n");  // never used as a format
    EXPECT_EQ(GetCapturedStdout(), Usage("sorvik") + "\nVERSION: 21.09.200 (BLD_1155)\n");
    EXPECT_EQ(GetCapturedStderr(), "no line end 100%\n");
}

}  // namespace

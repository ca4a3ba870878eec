#include "QVRInvOutput.h"

#include <gtest/gtest.h>

#include <map>
#include <regex>

#include "QVRICVersion.h"
#include "StreamCapture.h"

namespace {

struct Expected {
    std::string message;
    bool usage;
};

std::map<unsigned int, Expected> MessageTable() {
    const std::string invalid = "Option argument is Invalid\n";
    return {
        {0, {"", false}},
        {1, {"", false}},
        {2, {"Complete failure of all inventory components during inventory collection.", false}},
        {3, {"ERROR: Another instance of the Inventory Collector is currently active. Terminating\n", false}},
        {4, {"", false}},
        {5, {"Invalid command line options are specified.", true}},
        {6,
         {"Log file either does not exist or is not writable. Provide a valid writable file for avoiding "
          "this "
          "error.",
          false}},
        {7,
         {"Configuration file either does not exist or is not readable or if it does not adhere to the "
          "schema.Providing a valid configuration file for avoiding this error code",
          true}},
        {22, {"Invalid Encoding option specified", true}},
        {23, {"One of the Option specified requires Argument", true}},
        {24, {"One of the Option specified should not have Argument", true}},
        {25, {"One of the Command Line Option has dependency on other option", true}},
        {32, {"Invalid OutPut Format specified", true}},
        {35, {invalid, false}},
        {48, {"", false}},
        {49, {"No Instance of Inventory Collector is active \n", false}},
        {50, {"Unable to Process Invnetory Collector Progress", false}},
        {51, {invalid, false}},
        {52, {invalid, false}},
    };
}

std::string Usage() {
    char buffer[1024];
    std::snprintf(buffer, sizeof buffer, kQVRUsageFormat, "sorvik");
    return buffer;
}

TEST(QVRInvOutputTest, EveryCodePrintsItsMessageAndUsage) {
    const std::map<unsigned int, Expected> table = MessageTable();
    for (unsigned int code = 0; code <= 60; ++code) {
        const std::map<unsigned int, Expected>::const_iterator row = table.find(code);
        // Codes without a row print the usage text alone.
        const Expected expected = row != table.end() ? row->second : Expected{"", true};
        StreamCapture err(stderr);
        StreamCapture out(stdout);
        SetInvOutPut(code, "sorvik");
        const std::string printed = out.Finish();
        const std::string errors = err.Finish();
        EXPECT_EQ(errors, expected.message) << "code " << code;
        EXPECT_EQ(printed, expected.usage ? Usage() : "") << "code " << code;
    }
}

TEST(QVRInvOutputTest, LargeCodesPrintUsageOnly) {
    for (unsigned int code : {53u, 99u, 255u, 4000000000u}) {
        StreamCapture err(stderr);
        StreamCapture out(stdout);
        SetInvOutPut(code, "tool");
        const std::string printed = out.Finish();
        EXPECT_EQ(err.Finish(), "");
        EXPECT_NE(printed.find("\nUsage: tool [OPTION]...\n"), std::string::npos);
    }
}

TEST(QVRInvOutputTest, PrintErrorWritesTheTextAsItIs) {
    StreamCapture err(stderr);
    PrintError("no line end");
    PrintError(" 100%\n");
    EXPECT_EQ(err.Finish(), "no line end 100%\n");
}

TEST(QVRInvOutputTest, DateAndTimeIsLocalIsoForm) {
    EXPECT_TRUE(
        std::regex_match(GetCurrentDateAndTime(), std::regex(R"(\d{4}-\d{2}-\d{2} \d{2}:\d{2}:\d{2})")))
        << GetCurrentDateAndTime();
}

}  // namespace

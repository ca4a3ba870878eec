#include "BQMLogger.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <regex>
#include <string>
#include <thread>
#include <vector>

#include "BaseUtilsTestSupport.h"

namespace {

using testing::internal::CaptureStderr;
using testing::internal::GetCapturedStderr;

std::string Pad(const std::string& text, std::size_t width) {
    return text + std::string(width > text.size() ? width - text.size() : 0, ' ');
}

// line is head, the current date and time, then rest.
void ExpectLine(const std::string& line, const std::string& head, const std::string& rest) {
    static const std::regex stamp("[A-Z][a-z]+day, [A-Z][a-z]+ [0-9]{2}, [0-9]{4} [0-9]{2}:[0-9]{2}[AP]M ");
    std::smatch match;
    ASSERT_EQ(line.compare(0, head.size(), head), 0) << line;
    const std::string tail = line.substr(head.size());
    ASSERT_TRUE(std::regex_search(tail, match, stamp, std::regex_constants::match_continuous)) << line;
    EXPECT_EQ(tail.substr(match.length(0)), rest) << line;
}

class BQMLoggerTest : public ::testing::Test {
protected:
    void SetUp() override {
        BQMLogger::Terminate();
        options.SetApplicationName(BQMString("BQMIPMILibrary"));
        options.SetNumberOfSupportedLevels(5);
        options.SetUserLogFile(BQMFile(BQMString(userPath)));
        options.SetInternalLogFile(BQMFile(BQMString(internalPath)));
    }
    void TearDown() override { BQMLogger::Terminate(); }

    // One line at level in a fresh Initialize/Terminate round; returns what reached stderr.
    std::string LogOnce(int shown, int level) {
        options.SetNumberOfLevelsToShowInUserLog(shown);
        BQMLogger::Initialize(options);
        CaptureStderr();
        BQMLogger::Log(BQMString("src/file.cpp"), BQMString("Function"), 42, level, "message");
        BQMLogger::Terminate();
        return GetCapturedStderr();
    }

    ScopedTempDir dir;
    const std::string internalPath = dir.File("bqmipmi_internal.log"), userPath = dir.File("bqmipmi.log");
    BQMLoggingOptions options;
};

TEST_F(BQMLoggerTest, WithoutInitializeOrWithAnUnopenableLogNothingIsWritten) {
    int level = 0, argument = 0;
    const std::string missing = dir.File("no/such/dir/internal.log");
    CaptureStderr();
    BQM_LOG(++level, "value %d", ++argument);
    BQMLogger::Log(BQMString("f"), BQMString("g"), 1, BQM_LOG_TRACE, "dropped");
    EXPECT_FALSE(BQMFile(BQMString(internalPath)).Exists());
    options.SetNumberOfLevelsToShowInUserLog(5);
    options.SetInternalLogFile(BQMFile(BQMString(missing)));
    EXPECT_TRUE(BQMLogger::Initialize(options));
    BQMLogger::Log(BQMString("f"), BQMString("g"), 1, BQM_LOG_TRACE, "dropped");
    EXPECT_EQ(GetCapturedStderr(), "Error in Initialize opening user log file: " + missing + "\n");
    EXPECT_EQ(level + argument, 0);
    EXPECT_FALSE(BQMLogger::IsEnabled());
}

TEST_F(BQMLoggerTest, InternalUserAndStandardErrorLinesHaveTheirFormats) {
    options.SetNumberOfLevelsToShowInUserLog(5);
    ASSERT_TRUE(BQMLogger::Initialize(options));
    CaptureStderr();
    // The first message brings its own newline; no second one may follow.
    BQMLogger::Log(BQMString("src/Device.cpp"), BQMString("Send"), 7, BQM_LOG_ERROR, "code %d\n", 320);
    BQMLogger::Log(BQMString("f.cpp"), BQMString("Fn"), 1234, BQM_LOG_TRACE, "traced %s", "here");
    options.SetNumberOfLevelsToShowInUserLog(4);
    BQMLogger::Initialize(options);  // keeps the stream, now stderr for good, takes the new count
    BQMLogger::Log(BQMString("f"), BQMString("g"), 2, BQM_LOG_ERROR, "to stderr");
    const std::vector<std::string> err = SplitLines(GetCapturedStderr());
    BQMLogger::Terminate();  // drops stderr: the next round appends to the files again
    EXPECT_EQ(LogOnce(4, BQM_LOG_INFO), "");

    const std::vector<std::string> internal = SplitLines(ReadWholeFile(internalPath));
    const std::vector<std::string> user = SplitLines(ReadWholeFile(userPath));
    ASSERT_TRUE(internal.size() == 4 && err.size() == 2 && user.size() == 1);
    const std::string trace = Pad("Fn", 40) + "() " + Pad("f.cpp", 30) + ":1234 traced here";
    ExpectLine(internal[0], "BQMIPMILibrary ERROR : ",
               Pad("Send", 40) + "() " + Pad("src/Device.cpp", 30) + ":  7 code 320");
    ExpectLine(internal[1], "BQMIPMILibrary TRACE : ", trace);
    ExpectLine(err[0], "BQMIPMILibrary TRACE : ", trace);
    EXPECT_NE(err[1].find("ERROR : "), std::string::npos);
    ExpectLine(user[0], "BQMIPMILibrary INFO  : ",
               Pad("Function", 40) + "() " + Pad("src/file.cpp", 30) + ":42 message");
}

TEST_F(BQMLoggerTest, UserLogGetsLevelsUpToTheCountButTraceOnlyWhenTheCountIsFive) {
    const struct {
        int shown, level;
        bool inUserLog;
    } cases[] = {{5, BQM_LOG_FATAL, false}, {5, BQM_LOG_INFO, false}, {5, BQM_LOG_TRACE, true},
                 {5, BQM_LOG_DEBUG, false}, {4, BQM_LOG_FATAL, true}, {4, BQM_LOG_INFO, true},
                 {4, BQM_LOG_TRACE, false}, {6, BQM_LOG_WARN, true},  {6, BQM_LOG_TRACE, false},
                 {6, BQM_LOG_DEBUG, true},  {2, BQM_LOG_WARN, false}, {0, BQM_LOG_FATAL, false}};
    for (const auto& c : cases) {
        std::remove(userPath.c_str());
        std::remove(internalPath.c_str());
        const std::string err = LogOnce(c.shown, c.level);
        SCOPED_TRACE("shown " + std::to_string(c.shown) + " level " + std::to_string(c.level));
        EXPECT_EQ(!ReadWholeFile(userPath).empty() || !err.empty(), c.inUserLog);
        EXPECT_EQ(!err.empty(), c.inUserLog && c.level == BQM_LOG_TRACE);  // only TRACE goes to stderr
        EXPECT_EQ(SplitLines(ReadWholeFile(internalPath)).size(), c.shown ? 1u : 0u);  // 0: logger off
    }
}

TEST_F(BQMLoggerTest, ConcurrentLinesStayWhole) {
    options.SetNumberOfLevelsToShowInUserLog(4);
    ASSERT_TRUE(BQMLogger::Initialize(options));
    std::vector<std::thread> threads;
    for (int t = 0; t < 4; ++t) {
        threads.emplace_back([t] {
            for (int i = 0; i < 50; ++i) BQM_LOG(BQM_LOG_INFO, "thread %d line %d end", t, i);
        });
    }
    for (std::thread& thread : threads) thread.join();
    BQMLogger::Terminate();
    const std::vector<std::string> lines = SplitLines(ReadWholeFile(internalPath));
    ASSERT_EQ(lines.size(), 200u);
    for (const std::string& line : lines) {
        EXPECT_EQ(line.rfind("BQMIPMILibrary INFO  : ", 0), 0u) << line;
        EXPECT_NE(line.find("BQMLogger_test.cpp"), std::string::npos) << line;
        EXPECT_EQ(line.substr(line.size() - 4), " end") << line;
    }
}

}  // namespace

#include "BQMLogger.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <regex>
#include <string>
#include <thread>
#include <vector>

#include "BaseUtilsTestSupport.h"

namespace {

std::string Pad(const std::string& text, std::size_t width) {
    return text.size() >= width ? text : text + std::string(width - text.size(), ' ');
}

BQMString Utf8(const std::string& text) { return BQMString(text); }

// Checks "<app> <level> : <date> <time> <rest>" where rest must match exactly.
void ExpectLine(const std::string& line, const std::string& head, const std::string& rest) {
    ASSERT_EQ(line.compare(0, head.size(), head), 0) << line;
    const std::string tail = line.substr(head.size());
    static const std::regex stamp("^[A-Z][a-z]+day, [A-Z][a-z]+ [0-9]{2}, [0-9]{4} [0-9]{2}:[0-9]{2}[AP]M ");
    std::smatch match;
    ASSERT_TRUE(std::regex_search(tail, match, stamp)) << line;
    EXPECT_EQ(tail.substr(match.length(0)), rest) << line;
}

class BQMLoggerTest : public ::testing::Test {
  protected:
    void SetUp() override {
        BQMLogger::Terminate();
        internalPath = dir.File("bqmipmi_internal.log");
        userPath = dir.File("bqmipmi.log");
        options.SetApplicationName(Utf8("BQMIPMILibrary"));
        options.SetNumberOfSupportedLevels(5);
        options.SetNumberOfLevelsToShowInUserLog(5);
        options.SetUserLogFile(BQMFile(Utf8(userPath)));
        options.SetInternalLogFile(BQMFile(Utf8(internalPath)));
    }
    void TearDown() override { BQMLogger::Terminate(); }

    void LogAt(int level, const char* message) {
        BQMLogger::Log(Utf8("src/file.cpp"), Utf8("Function"), 42, level, "%s", message);
    }

    ScopedTempDir dir;
    std::string internalPath;
    std::string userPath;
    BQMLoggingOptions options;
};

TEST_F(BQMLoggerTest, WithoutInitializeNothingIsWrittenAndArgumentsAreNotEvaluated) {
    EXPECT_FALSE(BQMLogger::IsEnabled());
    int levelEvaluated = 0;
    int argumentEvaluated = 0;
    ScopedStderrCapture capture;
    BQM_LOG(++levelEvaluated, "value %d", ++argumentEvaluated);
    LogAt(BQM_LOG_TRACE, "dropped");
    EXPECT_EQ(capture.Release(), "");
    EXPECT_EQ(levelEvaluated, 0);
    EXPECT_EQ(argumentEvaluated, 0);
    EXPECT_FALSE(BQMFile(Utf8(internalPath)).Exists());
}

TEST_F(BQMLoggerTest, InitializeOpensBothLogsAndEnables) {
    EXPECT_TRUE(BQMLogger::Initialize(options));
    EXPECT_TRUE(BQMLogger::IsEnabled());
    EXPECT_TRUE(BQMFile(Utf8(internalPath)).Exists());
    EXPECT_TRUE(BQMFile(Utf8(userPath)).Exists());
    EXPECT_TRUE(BQMLogger::Terminate());
    EXPECT_FALSE(BQMLogger::IsEnabled());
    EXPECT_NE(BQMLogger::GetLockObject(), nullptr);
    EXPECT_EQ(BQMLogger::GetLockObject(), BQMLogger::GetLockObject());
}

TEST_F(BQMLoggerTest, ErrorLineGoesToTheInternalLogOnlyInTheDesignedFormat) {
    ASSERT_TRUE(BQMLogger::Initialize(options));
    ScopedStderrCapture capture;
    BQMLogger::Log(Utf8("bqmipmi/src/Device.cpp"), Utf8("SendCommand"), 7, BQM_LOG_ERROR, "code %d: %s", 320,
                   "failed");
    EXPECT_EQ(capture.Release(), "");
    BQMLogger::Terminate();

    const std::vector<std::string> lines = SplitLines(ReadWholeFile(internalPath));
    ASSERT_EQ(lines.size(), 1u);
    ExpectLine(lines[0], "BQMIPMILibrary ERROR : ",
               Pad("SendCommand", 40) + "() " + Pad("bqmipmi/src/Device.cpp", 30) + ":  7 code 320: failed");
    EXPECT_EQ(ReadWholeFile(userPath), "");
}

TEST_F(BQMLoggerTest, TraceLineGoesToInternalLogAndStandardErrorNotTheUserFile) {
    ASSERT_TRUE(BQMLogger::Initialize(options));
    ScopedStderrCapture capture;
    BQMLogger::Log(Utf8("f.cpp"), Utf8("Fn"), 1234, BQM_LOG_TRACE, "traced %s", "here");
    const std::string err = capture.Release();
    BQMLogger::Terminate();

    const std::vector<std::string> errLines = SplitLines(err);
    ASSERT_EQ(errLines.size(), 1u) << err;
    ExpectLine(errLines[0],
               "BQMIPMILibrary TRACE : ", Pad("Fn", 40) + "() " + Pad("f.cpp", 30) + ":1234 traced here");
    const std::vector<std::string> internal = SplitLines(ReadWholeFile(internalPath));
    ASSERT_EQ(internal.size(), 1u);
    ExpectLine(internal[0],
               "BQMIPMILibrary TRACE : ", Pad("Fn", 40) + "() " + Pad("f.cpp", 30) + ":1234 traced here");
    EXPECT_EQ(ReadWholeFile(userPath), "");
}

TEST_F(BQMLoggerTest, AfterATraceLineTheUserLogStaysStandardErrorUntilTerminate) {
    ASSERT_TRUE(BQMLogger::Initialize(options));
    {
        ScopedStderrCapture capture;
        LogAt(BQM_LOG_TRACE, "first");
        capture.Release();
    }
    // Re-initialising keeps the open (now standard error) user log but takes the new level count.
    options.SetNumberOfLevelsToShowInUserLog(4);
    ASSERT_TRUE(BQMLogger::Initialize(options));
    ScopedStderrCapture capture;
    LogAt(BQM_LOG_ERROR, "to stderr");
    const std::string err = capture.Release();
    EXPECT_NE(err.find("ERROR"), std::string::npos) << err;
    EXPECT_NE(err.find("to stderr"), std::string::npos) << err;
    EXPECT_EQ(ReadWholeFile(userPath), "");

    // Terminate drops standard error; the next Initialize reopens the file.
    BQMLogger::Terminate();
    ASSERT_TRUE(BQMLogger::Initialize(options));
    LogAt(BQM_LOG_ERROR, "to file");
    BQMLogger::Terminate();
    EXPECT_NE(ReadWholeFile(userPath).find("to file"), std::string::npos);
}

struct LevelRuleCase {
    int shown;
    int level;
    bool inUserLog;
};

class BQMLoggerLevelRuleTest : public BQMLoggerTest, public ::testing::WithParamInterface<LevelRuleCase> {};

TEST_P(BQMLoggerLevelRuleTest, UserLogGetsLevelsUpToTheCountButTraceOnlyWhenTheCountIsFive) {
    const LevelRuleCase& c = GetParam();
    options.SetNumberOfLevelsToShowInUserLog(c.shown);
    ASSERT_TRUE(BQMLogger::Initialize(options));
    ScopedStderrCapture capture;
    LogAt(c.level, "message");
    const std::string err = capture.Release();
    BQMLogger::Terminate();

    const std::string user = ReadWholeFile(userPath);
    const bool reachedUser = !user.empty() || !err.empty();
    EXPECT_EQ(reachedUser, c.inUserLog);
    if (c.inUserLog) {
        // Only TRACE lines are diverted to standard error.
        EXPECT_EQ(!err.empty(), c.level == BQM_LOG_TRACE);
        const std::string& text = err.empty() ? user : err;
        EXPECT_NE(text.find(":42 message\n"), std::string::npos) << text;
    }
    EXPECT_EQ(SplitLines(ReadWholeFile(internalPath)).size(), 1u);
}

INSTANTIATE_TEST_SUITE_P(
    Cases, BQMLoggerLevelRuleTest,
    ::testing::Values(LevelRuleCase{5, BQM_LOG_FATAL, false}, LevelRuleCase{5, BQM_LOG_INFO, false},
                      LevelRuleCase{5, BQM_LOG_TRACE, true}, LevelRuleCase{5, BQM_LOG_DEBUG, false},
                      LevelRuleCase{4, BQM_LOG_FATAL, true}, LevelRuleCase{4, BQM_LOG_INFO, true},
                      LevelRuleCase{4, BQM_LOG_TRACE, false}, LevelRuleCase{6, BQM_LOG_WARN, true},
                      LevelRuleCase{6, BQM_LOG_TRACE, false}, LevelRuleCase{6, BQM_LOG_DEBUG, true},
                      LevelRuleCase{2, BQM_LOG_WARN, false}));

TEST_F(BQMLoggerTest, ZeroLevelsInUserLogKeepsBothLogsSilent) {
    options.SetNumberOfLevelsToShowInUserLog(0);
    EXPECT_TRUE(BQMLogger::Initialize(options));
    EXPECT_FALSE(BQMLogger::IsEnabled());
    LogAt(BQM_LOG_FATAL, "dropped");
    BQMLogger::Terminate();
    EXPECT_FALSE(BQMFile(Utf8(userPath)).Exists());
    EXPECT_EQ(ReadWholeFile(internalPath), "");
}

TEST_F(BQMLoggerTest, FormatEndingInNewlineGetsNoSecondNewline) {
    options.SetNumberOfLevelsToShowInUserLog(4);
    ASSERT_TRUE(BQMLogger::Initialize(options));
    BQMLogger::Log(Utf8("f"), Utf8("g"), 1, BQM_LOG_INFO, "ends here\n");
    BQMLogger::Log(Utf8("f"), Utf8("g"), 2, BQM_LOG_INFO, "no newline");
    BQMLogger::Terminate();
    for (const std::string& path : {internalPath, userPath}) {
        const std::string text = ReadWholeFile(path);
        EXPECT_EQ(SplitLines(text).size(), 2u) << text;
        EXPECT_EQ(text.find("\n\n"), std::string::npos) << text;
        EXPECT_EQ(text.back(), '\n');
    }
}

TEST_F(BQMLoggerTest, ExistingLogsAreAppendedToAndMissingOnesCreated) {
    WriteWholeFile(internalPath, "earlier line\n");
    options.SetNumberOfLevelsToShowInUserLog(4);
    ASSERT_TRUE(BQMLogger::Initialize(options));
    LogAt(BQM_LOG_WARN, "new line");
    BQMLogger::Terminate();

    const std::vector<std::string> internal = SplitLines(ReadWholeFile(internalPath));
    ASSERT_EQ(internal.size(), 2u);
    EXPECT_EQ(internal[0], "earlier line");
    EXPECT_NE(internal[1].find("new line"), std::string::npos);
    const std::vector<std::string> user = SplitLines(ReadWholeFile(userPath));
    ASSERT_EQ(user.size(), 1u);
    EXPECT_NE(user[0].find("BQMIPMILibrary WARN  : "), std::string::npos) << user[0];

    // A second run appends to both.
    ASSERT_TRUE(BQMLogger::Initialize(options));
    LogAt(BQM_LOG_WARN, "second run");
    BQMLogger::Terminate();
    EXPECT_EQ(SplitLines(ReadWholeFile(internalPath)).size(), 3u);
    EXPECT_EQ(SplitLines(ReadWholeFile(userPath)).size(), 2u);
}

TEST_F(BQMLoggerTest, UnopenableLogIsReportedAndKeepsTheLoggerOff) {
    const std::string missing = dir.File("no/such/dir/internal.log");
    options.SetInternalLogFile(BQMFile(Utf8(missing)));
    ScopedStderrCapture capture;
    EXPECT_TRUE(BQMLogger::Initialize(options));
    LogAt(BQM_LOG_TRACE, "dropped");
    EXPECT_EQ(capture.Release(), "Error in Initialize opening user log file: " + missing + "\n");
    EXPECT_FALSE(BQMLogger::IsEnabled());
}

TEST_F(BQMLoggerTest, MacroPassesFileFunctionAndLine) {
    options.SetNumberOfLevelsToShowInUserLog(4);
    ASSERT_TRUE(BQMLogger::Initialize(options));
    const int line = __LINE__ + 1;
    BQM_LOG(BQM_LOG_INFO, "value %d", 17);
    BQMLogger::Terminate();
    const std::string text = ReadWholeFile(userPath);
    EXPECT_NE(text.find("BQMLogger_test.cpp"), std::string::npos) << text;
    EXPECT_NE(text.find("TestBody"), std::string::npos) << text;
    EXPECT_NE(text.find(":" + std::to_string(line) + " value 17\n"), std::string::npos) << text;
}

TEST_F(BQMLoggerTest, ConcurrentLinesStayWhole) {
    options.SetNumberOfLevelsToShowInUserLog(4);
    ASSERT_TRUE(BQMLogger::Initialize(options));
    std::vector<std::thread> threads;
    for (int t = 0; t < 4; ++t) {
        threads.emplace_back([t] {
            for (int i = 0; i < 50; ++i) {
                BQMLogger::Log(BQMString("t.cpp"), BQMString("Worker"), i, BQM_LOG_INFO,
                               "thread %d line %d end", t, i);
            }
        });
    }
    for (std::thread& thread : threads) thread.join();
    BQMLogger::Terminate();
    const std::vector<std::string> lines = SplitLines(ReadWholeFile(internalPath));
    ASSERT_EQ(lines.size(), 200u);
    for (const std::string& line : lines) {
        EXPECT_EQ(line.rfind("BQMIPMILibrary INFO  : ", 0), 0u) << line;
        EXPECT_EQ(line.substr(line.size() - 4), " end") << line;
    }
}

}  // namespace

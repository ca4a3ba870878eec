#include "CLogger.h"

#include <gtest/gtest.h>

#include <regex>
#include <sstream>
#include <string>
#include <vector>

#include "BaseUtilsTestSupport.h"

namespace {

class CLoggerTest : public ::testing::Test {
  protected:
    void SetUp() override { CLogger::DestroyInstanceForTesting(); }
    void TearDown() override { CLogger::DestroyInstanceForTesting(); }
    ScopedTempDir dir;
};

TEST_F(CLoggerTest, DisabledLoggerWritesNothingAndLeavesTheStreamAlone) {
    std::ostringstream message;
    message << "kept";
    CLogger::GetInstance()->log("a.cpp", 1, message);
    CLogger::GetInstance()->log("a.cpp", 1, std::string("nothing"));
    EXPECT_EQ(message.str(), "kept");
}

TEST_F(CLoggerTest, InitializeTwiceReturnsFalseThenTrue) {
    const std::string path = dir.File("debug.log");
    EXPECT_FALSE(CLogger::GetInstance()->Initialize(path));
    EXPECT_TRUE(CLogger::GetInstance()->Initialize(dir.File("other.log")));
    // The second call changed nothing: lines still go to the first file.
    CLogger::GetInstance()->log("x.cpp", 3, std::string("still first"));
    EXPECT_NE(ReadWholeFile(path).find("still first"), std::string::npos);
    EXPECT_FALSE(std::ifstream(dir.File("other.log")).good());
}

TEST_F(CLoggerTest, FailedOpenReturnsFalseAndStaysDisabled) {
    EXPECT_FALSE(CLogger::GetInstance()->Initialize(dir.File("missing/debug.log")));
    const std::string path = dir.File("later.log");
    EXPECT_FALSE(CLogger::GetInstance()->Initialize(path));
    CLogger::GetInstance()->log("y.cpp", 1, std::string("now enabled"));
    EXPECT_NE(ReadWholeFile(path).find("now enabled"), std::string::npos);
}

TEST_F(CLoggerTest, LineHasStampPaddedFileNameAndLine) {
    const std::string path = dir.File("debug.log");
    WriteWholeFile(path, "truncated away\n");
    CLogger::GetInstance()->Initialize(path);
    CLogger::GetInstance()->log("qvr_ModularIC/Controller/src/CQVRController.cpp", 77,
                                std::string("CQVRController::Run : \t\t\t\tstarted"));
    CLogger::GetInstance()->log("plain.cpp", 123456, std::string("second"));
    CLogger::GetInstance()->log(nullptr, 1, std::string("no file"));

    const std::vector<std::string> lines = SplitLines(ReadWholeFile(path));
    ASSERT_EQ(lines.size(), 3u);
    const std::regex stamp("^\\[[0-9]{4}-[0-9]{2}-[0-9]{2}T[0-9]{2}:[0-9]{2}:[0-9]{2}\\] : ");
    for (const std::string& line : lines) EXPECT_TRUE(std::regex_search(line, stamp)) << line;
    const std::size_t prefix = std::string("[2024-01-01T00:00:00] : ").size();
    EXPECT_EQ(lines[0].substr(prefix),
              "       CQVRController.cpp:   77: CQVRController::Run : \t\t\t\tstarted");
    EXPECT_EQ(lines[1].substr(prefix), "                plain.cpp:123456: second");
    EXPECT_EQ(lines[2].substr(prefix), "                         :    1: no file");
}

TEST_F(CLoggerTest, StreamVariantLogsTheTextAndEmptiesTheStream) {
    const std::string path = dir.File("debug.log");
    CLogger::GetInstance()->Initialize(path);
    std::ostringstream message;
    message << "value " << 42;
    message.setstate(std::ios::failbit);
    CLogger::GetInstance()->log("s.cpp", 5, message);
    EXPECT_EQ(message.str(), "");
    EXPECT_TRUE(message.good());
    message << "next";
    CLogger::GetInstance()->log("s.cpp", 6, message);

    const std::vector<std::string> lines = SplitLines(ReadWholeFile(path));
    ASSERT_EQ(lines.size(), 2u);
    EXPECT_NE(lines[0].find("s.cpp:    5: value 42"), std::string::npos) << lines[0];
    EXPECT_NE(lines[1].find("s.cpp:    6: next"), std::string::npos) << lines[1];
}

struct BaseNameCase {
    const char* path;
    const char* name;
};

class CLoggerFileNameTest : public ::testing::TestWithParam<BaseNameCase> {};

TEST_P(CLoggerFileNameTest, KeepsThePartAfterTheLastSlash) {
    EXPECT_EQ(CLogger::getFileName(GetParam().path), GetParam().name);
}

INSTANTIATE_TEST_SUITE_P(Cases, CLoggerFileNameTest,
                         ::testing::Values(BaseNameCase{"a/b/c.cpp", "c.cpp"}, BaseNameCase{"c.cpp", "c.cpp"},
                                           BaseNameCase{"/abs/x.h", "x.h"}, BaseNameCase{"dir/", ""},
                                           BaseNameCase{"", ""}));

TEST(CLoggerNamesTest, ProcessWideFileNames) {
    EXPECT_EQ(strBaseUtilsLogFileName, "baseutils.log");
    EXPECT_EQ(strEnableLogFileName, "kpxdebuglog");
}

}  // namespace

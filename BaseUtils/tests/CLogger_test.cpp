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
    CLogger logger;
    ScopedTempDir dir;
    const std::string path = dir.File("debug.log");
};

TEST_F(CLoggerTest, InitializeReturnsTheEarlierEnabledFlagNotTheOpenResult) {
    std::ostringstream kept;
    kept << "kept";
    logger.log("a.cpp", 1, kept);  // disabled: the stream is left alone
    EXPECT_EQ(kept.str(), "kept");
    EXPECT_FALSE(logger.Initialize(dir.File("missing/debug.log")));  // open failed
    EXPECT_FALSE(logger.Initialize(path));                           // opened
    EXPECT_TRUE(logger.Initialize(dir.File("other.log")));           // already enabled: nothing changes
    logger.log("x.cpp", 3, std::string("still first"));
    EXPECT_NE(ReadWholeFile(path).find("still first"), std::string::npos);
    EXPECT_EQ(ReadWholeFile(dir.File("other.log")), "");
}

TEST_F(CLoggerTest, LineHasStampRightAlignedBaseNameAndLineAndTheMessage) {
    WriteWholeFile(path, "truncated away\n");
    logger.Initialize(path);
    logger.log("qvr_ModularIC/Controller/src/CQVRController.cpp", 77, std::string("Run : \t\tstarted"));
    logger.log(nullptr, 123456, std::string("no file"));
    std::ostringstream message;
    message << "value " << 42;
    message.setstate(std::ios::failbit);
    logger.log("s.cpp", 5, message);
    EXPECT_EQ(message.str(), "");
    EXPECT_TRUE(message.good());

    const std::vector<std::string> lines = SplitLines(ReadWholeFile(path));
    const std::vector<std::string> expected = {"       CQVRController.cpp:   77: Run : \t\tstarted",
                                               "                         :123456: no file",
                                               "                    s.cpp:    5: value 42"};
    ASSERT_EQ(lines.size(), expected.size());
    const std::regex stamp("\\[[0-9]{4}-[0-9]{2}-[0-9]{2}T[0-9]{2}:[0-9]{2}:[0-9]{2}\\] : ");
    for (std::size_t i = 0; i < lines.size(); ++i) {
        std::smatch match;
        ASSERT_TRUE(std::regex_search(lines[i], match, stamp, std::regex_constants::match_continuous))
            << lines[i];
        EXPECT_EQ(lines[i].substr(match.length(0)), expected[i]);
    }
}

}  // namespace

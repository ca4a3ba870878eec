#include "BQMIPMIXMLConfig.h"

#include <gtest/gtest.h>

#include <string>

#include "ScopedWorkingDirectory.h"

namespace {

BQMString Text(const char* text) { return BQMString(text, BQMString::BQM_ENCODING_UTF8); }

class BQMIPMIXMLConfigTest : public ::testing::Test {
  protected:
    void SetUp() override { ASSERT_TRUE(directory.Ok()); }
    ScopedWorkingDirectory directory;
};

TEST_F(BQMIPMIXMLConfigTest, MissingFileIsNotInitialized) {
    BQMIPMIXMLConfig config;
    EXPECT_FALSE(config.Initialize());
    int value = 7;
    EXPECT_FALSE(config.GetConfigInt(Text("RetryCount"), &value));
    EXPECT_EQ(7, value);
}

TEST_F(BQMIPMIXMLConfigTest, ReadsKeysBelowTheDefaultElement) {
    ScopedWorkingDirectory::WriteFile(
        "BQMIPMIConfig.xml",
        "<BQMIPMIConfig>\n"
        "  <Configuration name=\"Other\"><RetryCount>99</RetryCount></Configuration>\n"
        "  <Configuration name=\"Default\">\n"
        "    <RetryCount>3</RetryCount>\n"
        "    <RetryInterval> 120 </RetryInterval>\n"
        "  </Configuration>\n"
        "</BQMIPMIConfig>\n");
    BQMIPMIXMLConfig config;
    ASSERT_TRUE(config.Initialize());
    int value = 0;
    EXPECT_TRUE(config.GetConfigInt(Text("RetryCount"), &value));
    EXPECT_EQ(3, value);
    EXPECT_TRUE(config.GetConfigInt(Text("RetryInterval"), &value));
    EXPECT_EQ(120, value);
    value = 5;
    EXPECT_FALSE(config.GetConfigInt(Text("PollingCount"), &value));
    EXPECT_EQ(5, value);
}

TEST_F(BQMIPMIXMLConfigTest, ReadsKeysBelowANestedDefaultDevice) {
    ScopedWorkingDirectory::WriteFile("BQMIPMIConfig.xml",
                                      "<IPMI><Config name=\"Default\"><Device name=\"Default\">"
                                      "<PollingCount>8</PollingCount></Device></Config></IPMI>");
    BQMIPMIXMLConfig config;
    int value = 0;
    EXPECT_TRUE(config.GetConfigInt(Text("PollingCount"), &value));
    EXPECT_EQ(8, value);
}

TEST_F(BQMIPMIXMLConfigTest, DocumentWithoutDefaultGivesNothing) {
    ScopedWorkingDirectory::WriteFile("BQMIPMIConfig.xml",
                                      "<IPMI><Config name=\"x\"><RetryCount>1</RetryCount></Config></IPMI>");
    BQMIPMIXMLConfig config;
    ASSERT_TRUE(config.Initialize());
    EXPECT_EQ(nullptr, config.GetDefaultConfigNode());
    int value = 0;
    EXPECT_FALSE(config.GetConfigInt(Text("RetryCount"), &value));
}

TEST_F(BQMIPMIXMLConfigTest, UnparsableFileFailsQuietly) {
    ScopedWorkingDirectory::WriteFile("BQMIPMIConfig.xml", "<IPMI><Config name=\"Default\">");
    BQMIPMIXMLConfig config;
    testing::internal::CaptureStderr();
    EXPECT_FALSE(config.Initialize());
    EXPECT_EQ("", testing::internal::GetCapturedStderr());
}

TEST_F(BQMIPMIXMLConfigTest, RenamingForgetsTheDocumentAlreadyRead) {
    ScopedWorkingDirectory::WriteFile("BQMIPMIConfig.xml",
                                      "<r><c name=\"Default\"><RetryCount>3</RetryCount></c></r>");
    ScopedWorkingDirectory::WriteFile("other.xml",
                                      "<r><c name=\"Default\"><RetryCount>4</RetryCount></c></r>");
    BQMIPMIXMLConfig config;
    int value = 0;
    ASSERT_TRUE(config.GetConfigInt(Text("RetryCount"), &value));
    EXPECT_EQ(3, value);
    config.SetConfigurationFileName(Text("other.xml"));
    ASSERT_TRUE(config.GetConfigInt(Text("RetryCount"), &value));
    EXPECT_EQ(4, value);
}

}  // namespace

#include "QVRICVersion.h"

#include <gtest/gtest.h>

#include <cstring>

#include "StreamCapture.h"

namespace {

TEST(QVRICVersionTest, UsageTextIs688Characters) { EXPECT_EQ(std::strlen(kQVRUsageFormat), 688u); }

TEST(QVRICVersionTest, HelpFillsTheProgramName) {
    StreamCapture out(stdout);
    PrintHelpUsage("sorvik");
    const std::string printed = out.Finish();
    EXPECT_EQ(printed.size(), 688u - 2u + 6u);
    EXPECT_EQ(printed.rfind("\nUsage: sorvik [OPTION]...\n \t\tOptions:\n", 0), 0u);
    EXPECT_NE(printed.find("running inventroy collector\n"), std::string::npos);
    EXPECT_NE(printed.find("specified by - outc\n"), std::string::npos);
    EXPECT_NE(printed.find("component  like BIOS, APAC, APP, FRMW.\n"), std::string::npos);
    EXPECT_EQ(printed.find("-category"), std::string::npos);
}

TEST(QVRICVersionTest, VersionLine) {
    StreamCapture out(stdout);
    PrintICVersion();
    EXPECT_EQ(out.Finish(), "\nVERSION: 21.09.200 (BLD_1155)\n");
    EXPECT_EQ(GetICVersion(), "21.09.200 (BLD_1155)");
    EXPECT_EQ(GetICBuildVersion(), "1155");
}

}  // namespace

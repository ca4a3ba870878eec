#include "BQMLXOperatingSystemVersion.h"

#include <gtest/gtest.h>

#include <string>

#include "BQMEnvironmentInfo.h"
#include "BQMLXOSProbe.h"
#include "BaseUtilsTestSupport.h"

namespace {

TEST(BQMLXOperatingSystemVersionTest, EsxIs18EsxiIs19AndAnythingElse0) {
    const std::string longLine = std::string(1020, 'x') + "VMware ESX 4\n";
    // clang-format off
    const struct { const char *release, *sysname; bool unameWorks; int code; } cases[] = {
        {nullptr, "Linux", true, 0}, {"VMware ESX Server 3", "Linux", true, 18},
        {"Release: VMware ESX 4\n", "Linux", true, 18},  // anywhere in the line
        {longLine.c_str(), "Linux", true, 0},  // only the first 1024 characters count
        {"VMware Workstation\n", "Linux", true, 0}, {nullptr, "VMkernel2", true, 0},
        {nullptr, "VMkernel", true, 19}, {"VMware ESX 4\n", "VMKERNEL", true, 19},
        {"VMware ESX 4\n", "VMkernel", false, 18}, {nullptr, "VMkernel", false, 0}};  // a failed uname is unread
    // clang-format on
    for (const auto& c : cases) {
        FakeOSProbe probe(c.release, c.sysname, c.unameWorks);
        BQMLXOperatingSystemVersion version(&probe);
        SCOPED_TRACE(std::string(c.sysname) + " / " + (c.release ? c.release : "no release file"));
        EXPECT_EQ(version.Initialize(), c.code != 0);
        EXPECT_EQ(version.GetOSName(), c.code);
    }
}

TEST(BQMEnvironmentInfoTest, InitializeCreatesOneVersionObjectAndIsTrueOnPlainLinux) {
    FakeOSProbe linuxHost(nullptr, "Linux");
    BQMEnvironmentInfo info(&linuxHost);
    EXPECT_EQ(info.GetOSVersion(), nullptr);
    ASSERT_TRUE(info.Initialize());
    BQMOperatingSystemVersion* first = info.GetOSVersion();
    EXPECT_TRUE(info.Initialize());
    EXPECT_TRUE(info.GetOSVersion() == first && info.GetOSName() == 0);
}

TEST(BQMLXOSProbeTest, RealProbeReadsAtMostTheFirstLineAndUname) {
    ScopedTempDir dir;
    WriteWholeFile(dir.File("release"), "first line\nsecond line\n");
    BQMLXOSProbe probe;
    std::string line, sysname, release;
    EXPECT_FALSE(probe.FileExists(dir.File("missing")));
    ASSERT_TRUE(probe.ReadFirstLine(dir.File("release"), 5, line));
    EXPECT_EQ(line, "first");
    ASSERT_TRUE(probe.ReadFirstLine(dir.File("release"), 1024, line) && probe.Uname(sysname, release));
    EXPECT_EQ(line + "/" + sysname, "first line/Linux");
}

}  // namespace

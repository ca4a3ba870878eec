#include "BQMLXOperatingSystemVersion.h"

#include <gtest/gtest.h>

#include <string>

#include "BQMEnvironmentInfo.h"
#include "BQMLXOSProbe.h"
#include "BaseUtilsTestSupport.h"

namespace {

// "/etc/vmware-release" (absent when release is null) and uname's system name.
struct FakeOSProbe : IBQMOSProbe {
    FakeOSProbe(const char* release, const char* sysname, bool unameWorks = true)
        : release(release), sysname(sysname), unameWorks(unameWorks) {}
    bool FileExists(const std::string& path) override {
        ++existsCalls;
        return release != nullptr && path == "/etc/vmware-release";
    }
    bool ReadFirstLine(const std::string& path, std::size_t maxCharacters, std::string& line) override {
        if (!FileExists(path)) return false;
        line = std::string(release).substr(0, std::string(release).find('\n')).substr(0, maxCharacters);
        return true;
    }
    bool Uname(std::string& systemName, std::string& version) override {
        systemName = sysname;
        version = "6.1.0-18-amd64";
        return unameWorks;
    }
    const char *release, *sysname;
    bool unameWorks;
    int existsCalls = 0;
};

TEST(BQMLXOperatingSystemVersionTest, EsxIs18EsxiIs19AndAnythingElse0) {
    const std::string longLine = std::string(1020, 'x') + "VMware ESX 4\n";
    // clang-format off
    const struct { const char *release, *sysname; bool unameWorks; int code; } cases[] = {
        {nullptr, "Linux", true, 0}, {"VMware ESX Server 3", "Linux", true, 18},
        {"VMware ESX 4.1.0 (Kandinsky) build 260247\n", "Linux", true, 18},
        {"Some release\nVMware ESX 4.1.0\n", "Linux", true, 0},  // only the first line counts
        {longLine.c_str(), "Linux", true, 0},  // only the first 1024 characters count
        {"VMware Workstation\n", "Linux", true, 0}, {nullptr, "VMkernel2", true, 0},
        {nullptr, "VMkernel", true, 19}, {nullptr, "vmkernel", true, 19}, {"VMware ESX 4\n", "VMKERNEL", true, 19},
        {"VMware ESX 4\n", "VMkernel", false, 18}, {nullptr, "VMkernel", false, 0}};  // a failed uname is unread
    // clang-format on
    for (const auto& c : cases) {
        FakeOSProbe probe(c.release, c.sysname, c.unameWorks);
        BQMLXOperatingSystemVersion version(&probe);
        SCOPED_TRACE(std::string(c.sysname) + " / " + (c.release ? c.release : "no release file"));
        EXPECT_EQ(version.Initialize(), c.code != 0);
        EXPECT_EQ(version.GetOSName(), c.code);
        EXPECT_EQ(version.GetOSArch() + version.GetOSType() + version.GetOSVendorName(), 0);
        EXPECT_EQ(version.GetVendorVersion(), "6.5");
    }
}

TEST(BQMEnvironmentInfoTest, InitializeCreatesOneVersionObjectAndIsTrueOnPlainLinux) {
    FakeOSProbe linuxHost(nullptr, "Linux");
    BQMEnvironmentInfo info(&linuxHost);
    EXPECT_EQ(info.GetOSVersion(), nullptr);
    ASSERT_TRUE(info.Initialize());
    BQMOperatingSystemVersion* first = info.GetOSVersion();
    const int calls = linuxHost.existsCalls;
    EXPECT_TRUE(info.Initialize());
    EXPECT_TRUE(info.GetOSVersion() == first && linuxHost.existsCalls == calls && info.GetOSName() == 0);
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

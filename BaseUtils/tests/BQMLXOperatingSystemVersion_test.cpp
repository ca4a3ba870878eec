#include "BQMLXOperatingSystemVersion.h"

#include <gtest/gtest.h>

#include <map>
#include <string>

#include "BQMEnvironmentInfo.h"
#include "BQMLXOSProbe.h"
#include "BaseUtilsTestSupport.h"
#include "IBQMOSProbe.h"

namespace {

const char* const kRelease = "/etc/vmware-release";

// A file system of whole-file texts plus a uname answer.
class FakeOSProbe : public IBQMOSProbe {
  public:
    bool FileExists(const std::string& path) override {
        ++existsCalls;
        return files.count(path) != 0;
    }
    bool ReadFirstLine(const std::string& path, std::size_t maxCharacters, std::string& line) override {
        const auto it = files.find(path);
        if (it == files.end()) return false;
        line = it->second.substr(0, it->second.find('\n')).substr(0, maxCharacters);
        return true;
    }
    bool Uname(std::string& systemName, std::string& release) override {
        if (!unameWorks) return false;
        systemName = sysname;
        release = "6.1.0-18-amd64";
        return true;
    }

    std::map<std::string, std::string> files;
    std::string sysname = "Linux";
    bool unameWorks = true;
    int existsCalls = 0;
};

struct HostCase {
    const char* name;
    const char* releaseFile;  // null: no such file
    const char* sysname;
    bool unameWorks;
    int expectedCode;
    bool expectedResult;
};

class BQMLXOperatingSystemVersionTest : public ::testing::TestWithParam<HostCase> {};

TEST_P(BQMLXOperatingSystemVersionTest, IdentifiesTheHost) {
    const HostCase& c = GetParam();
    FakeOSProbe probe;
    if (c.releaseFile != nullptr) probe.files[kRelease] = c.releaseFile;
    probe.sysname = c.sysname;
    probe.unameWorks = c.unameWorks;
    BQMLXOperatingSystemVersion version(&probe);
    EXPECT_EQ(version.GetOSName(), 0);
    EXPECT_EQ(version.Initialize(), c.expectedResult);
    EXPECT_EQ(version.GetOSName(), c.expectedCode);
    EXPECT_EQ(version.GetOSArch(), 0);
    EXPECT_EQ(version.GetOSType(), 0);
    EXPECT_EQ(version.GetOSVendorName(), 0);
}

INSTANTIATE_TEST_SUITE_P(
    Hosts, BQMLXOperatingSystemVersionTest,
    ::testing::Values(HostCase{"PlainLinux", nullptr, "Linux", true, 0, false},
                      HostCase{"Esx", "VMware ESX 4.1.0 (Kandinsky) build 260247\n", "Linux", true, 18, true},
                      HostCase{"EsxWithoutNewline", "VMware ESX Server 3", "Linux", true, 18, true},
                      HostCase{"EsxWordsOnLaterLineOnly", "Some release\nVMware ESX 4.1.0\n", "Linux", true,
                               0, false},
                      HostCase{"ReleaseFileWithOtherText", "VMware Workstation\n", "Linux", true, 0, false},
                      HostCase{"EsxiUpperCase", nullptr, "VMkernel", true, 19, true},
                      HostCase{"EsxiLowerCase", nullptr, "vmkernel", true, 19, true},
                      HostCase{"EsxiOverridesEsx", "VMware ESX 4.1.0\n", "VMKERNEL", true, 19, true},
                      HostCase{"KernelNameMustMatchWhole", nullptr, "VMkernel2", true, 0, false},
                      HostCase{"UnameFailsAfterEsx", "VMware ESX 4.1.0\n", "VMkernel", false, 18, true},
                      HostCase{"UnameFailsOnLinux", nullptr, "VMkernel", false, 0, false}),
    [](const ::testing::TestParamInfo<HostCase>& info) { return std::string(info.param.name); });

TEST(BQMLXOperatingSystemVersionOtherTest, ReadsOnlyTheFirst1024CharactersOfTheLine) {
    FakeOSProbe probe;
    probe.files[kRelease] = std::string(1020, 'x') + "VMware ESX 4\n";
    BQMLXOperatingSystemVersion version(&probe);
    EXPECT_FALSE(version.Initialize());
    EXPECT_EQ(version.GetOSName(), 0);
}

TEST(BQMLXOperatingSystemVersionOtherTest, VendorVersionIsAlwaysSixPointFive) {
    FakeOSProbe probe;
    BQMLXOperatingSystemVersion version(&probe);
    EXPECT_EQ(version.GetVendorVersion(), "6.5");
    version.Initialize();
    EXPECT_EQ(version.GetVendorVersion(), "6.5");
    EXPECT_EQ(version.GetVersion(), "6.1.0-18-amd64");
}

TEST(BQMEnvironmentInfoTest, InitializeCreatesOneObjectAndReturnsTrueOnPlainLinux) {
    FakeOSProbe probe;
    BQMEnvironmentInfo info(&probe);
    EXPECT_EQ(info.GetOSVersion(), nullptr);
    EXPECT_EQ(info.GetOSName(), 0);
    ASSERT_TRUE(info.Initialize());
    BQMOperatingSystemVersion* first = info.GetOSVersion();
    ASSERT_NE(first, nullptr);
    EXPECT_EQ(info.GetOSName(), 0);
    const int calls = probe.existsCalls;
    EXPECT_TRUE(info.Initialize());
    EXPECT_EQ(info.GetOSVersion(), first);
    EXPECT_EQ(probe.existsCalls, calls);
}

TEST(BQMEnvironmentInfoTest, ReportsTheCodesOfTheVersionObject) {
    FakeOSProbe probe;
    probe.sysname = "vmkernel";
    BQMEnvironmentInfo info(&probe);
    ASSERT_TRUE(info.Initialize());
    EXPECT_EQ(info.GetOSName(), BQM_OS_NAME_ESXI);
    EXPECT_EQ(info.GetOSArch(), 0);
    EXPECT_EQ(info.GetOSType(), 0);
    EXPECT_EQ(info.GetOSVendorName(), 0);
}

TEST(BQMLXOSProbeTest, RealProbeReadsFirstLineAndUname) {
    ScopedTempDir dir;
    const std::string path = dir.File("release");
    WriteWholeFile(path, "first line\nsecond line\n");
    BQMLXOSProbe probe;
    EXPECT_TRUE(probe.FileExists(path));
    EXPECT_FALSE(probe.FileExists(dir.File("missing")));
    std::string line;
    ASSERT_TRUE(probe.ReadFirstLine(path, 1024, line));
    EXPECT_EQ(line, "first line");
    ASSERT_TRUE(probe.ReadFirstLine(path, 5, line));
    EXPECT_EQ(line, "first");
    EXPECT_FALSE(probe.ReadFirstLine(dir.File("missing"), 1024, line));
    std::string sysname, release;
    ASSERT_TRUE(probe.Uname(sysname, release));
    EXPECT_EQ(sysname, "Linux");
    EXPECT_FALSE(release.empty());
}

}  // namespace

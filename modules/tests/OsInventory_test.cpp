#include "OsInventory.h"

#include <gtest/gtest.h>

#include "ModuleTestSupport.h"

using svmtest::FakeRoot;
using svmtest::Select;

namespace svm {
namespace {

std::string Collect(const FakeRoot& root) {
    SvmDocument doc;
    ModuleOptions options;
    options.root = root.Path();
    CollectOsInventory(options, doc);
    return doc.ToString();
}

TEST(OsInventoryTest, ReadsOsReleaseAndArchitecture) {
    FakeRoot root;
    root.Write("/usr/lib/os-release",
               "PRETTY_NAME=\"Example Linux 9.4 (Blue Onyx)\"\n"
               "NAME=\"Example Linux\"\n"
               "VERSION_ID=\"9.4\"\n"
               "ID=example\n"
               "# comment\n");
    root.Link("../usr/lib/os-release", "/etc/os-release");
    root.Write("/proc/sys/kernel/arch", "aarch64\n");
    std::string xml = Collect(root);
    auto os = Select(xml, "/SVMInventory/OperatingSystem");
    ASSERT_EQ(1u, os.size()) << xml;
    EXPECT_EQ("Example Linux", os[0]["osVendor"]);
    EXPECT_EQ("example", os[0]["osCode"]);
    EXPECT_EQ("Example Linux 9.4 (Blue Onyx)", os[0]["name"]);
    EXPECT_EQ("9", os[0]["majorVersion"]);
    EXPECT_EQ("4", os[0]["minorVersion"]);
    EXPECT_EQ("aarch64", os[0]["osArch"]);
    EXPECT_EQ(0u, os[0].count("buildNumber"));
}

TEST(OsInventoryTest, MissingOsReleaseIsAFailure) {
    FakeRoot root;
    auto status = Select(Collect(root), "/SVMInventory/SPStatus[@result='false']/Message");
    ASSERT_EQ(1u, status.size());
    EXPECT_NE(std::string::npos, status[0]["#text"].find("/etc/os-release"));
    EXPECT_NE(std::string::npos, status[0]["#text"].find("/usr/lib/os-release"));
}

TEST(OsInventoryTest, OsReleaseWithoutIdentityIsAFailure) {
    FakeRoot root;
    root.Write("/etc/os-release", "garbage\n");
    EXPECT_EQ(1u, Select(Collect(root), "//SPStatus").size());
    EXPECT_EQ(0u, Select(Collect(root), "//OperatingSystem").size());
}

struct VersionCase {
    std::string versionId, major, minor;
};

class OsVersionTest : public ::testing::TestWithParam<VersionCase> {};

TEST_P(OsVersionTest, SplitsAtFirstDot) {
    std::map<std::string, std::string> fields{{"ID", "x"}, {"VERSION_ID", GetParam().versionId}};
    OperatingSystemInfo os = MakeOperatingSystem(fields, "x86_64");
    EXPECT_EQ(GetParam().major, os.majorVersion);
    EXPECT_EQ(GetParam().minor, os.minorVersion);
}

INSTANTIATE_TEST_SUITE_P(Table, OsVersionTest,
                         ::testing::Values(VersionCase{"12", "12", ""}, VersionCase{"15.5", "15", "5"},
                                           VersionCase{"22.04", "22", "04"},
                                           VersionCase{"3.19.1", "3", "19.1"}, VersionCase{"", "", ""}));

TEST(OsReleaseParseTest, QuotesEscapesAndVendorName) {
    auto fields = ParseOsRelease(
        "NAME='Single Quoted'\nVENDOR_NAME=\"Vendor \\\"Q\\\" & "
        "Co\"\nBUILD_ID=2024.1\nlower=x\n=bad\nID=a\n");
    EXPECT_EQ("Single Quoted", fields["NAME"]);
    EXPECT_EQ("Vendor \"Q\" & Co", fields["VENDOR_NAME"]);
    EXPECT_EQ(0u, fields.count("lower"));
    OperatingSystemInfo os = MakeOperatingSystem(fields, "x86_64");
    EXPECT_EQ("Vendor \"Q\" & Co", os.osVendor);
    EXPECT_EQ("2024.1", os.buildNumber);
    EXPECT_EQ("Single Quoted", os.name);
}

}  // namespace
}  // namespace svm

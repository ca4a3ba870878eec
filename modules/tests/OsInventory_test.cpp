#include "OsInventory.h"

#include <gtest/gtest.h>

#include "ModuleTestSupport.h"

using svmtest::Collect;
using svmtest::Failures;
using svmtest::Select;

namespace svm {
namespace {

TEST(OsInventoryTest, ReadsOsReleaseThroughItsLinkAndTheArchitecture) {
    svmtest::FakeRoot root;
    root.Write("/usr/lib/os-release",
               "PRETTY_NAME=\"Example Linux 9.4 (Blue Onyx)\"\nNAME=\"Example Linux\"\nVERSION_ID=\"9.4\"\n"
               "ID=example\n# comment\n");
    root.Link("../usr/lib/os-release", "/etc/os-release");
    root.Write("/proc/sys/kernel/arch", "aarch64\n");
    auto os = Select(Collect(CollectOsInventory, root), "/SVMInventory/OperatingSystem");
    ASSERT_EQ(1u, os.size());
    EXPECT_EQ("Example Linux|example|Example Linux 9.4 (Blue Onyx)|9|4|aarch64",
              os[0]["osVendor"] + "|" + os[0]["osCode"] + "|" + os[0]["name"] + "|" + os[0]["majorVersion"] +
                  "|" + os[0]["minorVersion"] + "|" + os[0]["osArch"]);
    EXPECT_EQ(0u, os[0].count("buildNumber"));
}

TEST(OsInventoryTest, MissingOrUselessOsReleaseIsAFailure) {
    svmtest::FakeRoot root;
    auto failures = Failures(Collect(CollectOsInventory, root));
    ASSERT_EQ(1u, failures.size());
    EXPECT_NE(std::string::npos, failures[0].find("/etc/os-release"));
    EXPECT_NE(std::string::npos, failures[0].find("/usr/lib/os-release"));
    root.Write("/etc/os-release", "garbage\n");
    const std::string xml = Collect(CollectOsInventory, root);
    EXPECT_EQ(1u, Failures(xml).size());
    EXPECT_EQ(0u, Select(xml, "//OperatingSystem").size());
}

TEST(OsReleaseParseTest, QuotesEscapesVendorAndVersionSplit) {
    auto fields = ParseOsRelease(
        "NAME='Single Quoted'\nVENDOR_NAME=\"Vendor \\\"Q\\\" & Co\"\nBUILD_ID=2024.1\n"
        "lower=x\n=bad\nID=a\n");
    EXPECT_EQ(0u, fields.count("lower"));
    OperatingSystemInfo os = MakeOperatingSystem(fields, "x86_64");
    EXPECT_EQ("Vendor \"Q\" & Co|2024.1|Single Quoted", os.osVendor + "|" + os.buildNumber + "|" + os.name);
    const char* const versions[][3] = {
        {"12", "12", ""}, {"15.5", "15", "5"}, {"22.04", "22", "04"}, {"3.19.1", "3", "19.1"}, {"", "", ""}};
    for (const auto& v : versions) {
        os = MakeOperatingSystem({{"ID", "x"}, {"VERSION_ID", v[0]}}, "x86_64");
        EXPECT_EQ(std::string(v[1]) + "|" + v[2], os.majorVersion + "|" + os.minorVersion) << v[0];
    }
}

}  // namespace
}  // namespace svm

#include "svm/SvmDocument.h"

#include <gtest/gtest.h>

#include "ModuleTestSupport.h"
#include "svm/TextUtil.h"

using svmtest::Select;

namespace svm {
namespace {

TEST(SvmDocumentTest, EmptyDocumentIsJustTheRoot) {
    SvmDocument doc;
    std::string xml = doc.ToString();
    EXPECT_EQ(0u, xml.find("<?xml version=\"1.0\" encoding=\"UTF-8\"?>"));
    EXPECT_EQ(1u, Select(xml, "/SVMInventory").size());
    EXPECT_EQ(0u, Select(xml, "/SVMInventory/*").size());
}

TEST(SvmDocumentTest, MarkupCharactersInValuesAreEscapedAndRoundTrip) {
    const std::string nasty = "A&B<C>\"D'E";
    SvmDocument doc;
    SvmDocument::DeviceRef dev = doc.AddNonPciDevice({"", nasty, "", "X&Y"});
    doc.AddApplication(dev, {"FRMW", nasty, nasty});
    doc.AddFailure("cannot read <" + nasty + ">");
    std::string xml = doc.ToString();
    EXPECT_EQ(std::string::npos, xml.find("A&B<")) << xml;
    EXPECT_NE(std::string::npos, xml.find("A&amp;B&lt;C&gt;&quot;D'E")) << xml;

    auto apps = Select(xml, "/SVMInventory/Device/Application");
    ASSERT_EQ(1u, apps.size());
    EXPECT_EQ(nasty, apps[0]["version"]);
    EXPECT_EQ(nasty, apps[0]["display"]);
    auto devices = Select(xml, "/SVMInventory/Device");
    ASSERT_EQ(1u, devices.size());
    EXPECT_EQ("X&Y", devices[0]["FQDD"]);
    auto messages = Select(xml, "/SVMInventory/SPStatus[@result='false']/Message");
    ASSERT_EQ(1u, messages.size());
    EXPECT_EQ("cannot read <" + nasty + ">", messages[0]["#text"]);
}

TEST(SvmDocumentTest, PciDeviceCarriesHexAddressAndOptionalAttributes) {
    SvmDocument doc;
    PciDeviceInfo info;
    info.vendorID = "8086";
    info.deviceID = "1572";
    info.subVendorID = "1028";
    info.subDeviceID = "1f99";
    info.display = "Ethernet";
    info.bus = 0x3b;
    info.device = 0x1f;
    info.function = 7;
    doc.AddPciDevice(info);
    auto devices = Select(doc.ToString(), "/SVMInventory/Device");
    ASSERT_EQ(1u, devices.size());
    EXPECT_EQ("3b", devices[0]["bus"]);
    EXPECT_EQ("1f", devices[0]["device"]);
    EXPECT_EQ("7", devices[0]["function"]);
    EXPECT_EQ(0u, devices[0].count("componentID"));
    EXPECT_EQ(0u, devices[0].count("enum"));
    EXPECT_EQ(1, doc.DeviceCount());
}

TEST(SvmDocumentTest, NonPciDeviceAlwaysHasComponentId) {
    SvmDocument doc;
    doc.AddNonPciDevice({"", "Disk", "", ""});
    auto devices = Select(doc.ToString(), "/SVMInventory/Device");
    ASSERT_EQ(1u, devices.size());
    EXPECT_EQ(1u, devices[0].count("componentID"));
    EXPECT_EQ(0u, devices[0].count("FQDD"));
    EXPECT_EQ(0u, devices[0].count("vendorID"));
}

TEST(SvmDocumentTest, OperatingSystemLeavesOutEmptyServicePackAndBuild) {
    SvmDocument doc;
    OperatingSystemInfo os;
    os.osVendor = "Debian";
    os.osCode = "debian";
    os.majorVersion = "12";
    doc.AddOperatingSystem(os);
    doc.AddSystem("R1");
    std::string xml = doc.ToString();
    auto found = Select(xml, "/SVMInventory/OperatingSystem");
    ASSERT_EQ(1u, found.size());
    EXPECT_EQ("12", found[0]["majorVersion"]);
    EXPECT_EQ(1u, found[0].count("minorVersion"));
    EXPECT_EQ(0u, found[0].count("spMajorVersion"));
    EXPECT_EQ(0u, found[0].count("buildNumber"));
    EXPECT_EQ("R1", Select(xml, "/SVMInventory/System")[0]["systemID"]);
}

TEST(SvmDocumentTest, ControlCharactersAndBadUtf8NeverBreakTheDocument) {
    SvmDocument doc;
    std::string bad = std::string("v1\x01\x1f") + "\xff\xfe" + "\xc3\xa9" + "\xed\xa0\x80";
    doc.AddNonPciDevice({"", bad, "", ""});
    auto devices = Select(doc.ToString(), "/SVMInventory/Device");
    ASSERT_EQ(1u, devices.size());
    EXPECT_EQ("v1  ??\xc3\xa9???", devices[0]["display"]);
}

struct CleanCase {
    std::string in, out;
};

class CleanTextTest : public ::testing::TestWithParam<CleanCase> {};

TEST_P(CleanTextTest, Cleans) { EXPECT_EQ(GetParam().out, CleanText(GetParam().in)); }

INSTANTIATE_TEST_SUITE_P(Table, CleanTextTest,
                         ::testing::Values(CleanCase{"  1.2.3 \n", "1.2.3"}, CleanCase{"a\tb", "a\tb"},
                                           CleanCase{std::string("x\0y", 3), "x y"},
                                           CleanCase{"\xe2\x82\xac", "\xe2\x82\xac"},
                                           CleanCase{"\xc0\xaf", "??"},  // overlong "/"
                                           CleanCase{"\xf4\x90\x80\x80", "????"},
                                           CleanCase{"\x7f"
                                                     "ab",
                                                     "ab"}));

TEST(TextUtilTest, ParseAndFormatHex) {
    uint32_t v = 0;
    EXPECT_TRUE(ParseHex("0x8086\n", v));
    EXPECT_EQ(0x8086u, v);
    EXPECT_TRUE(ParseHex("1AF4", v));
    EXPECT_EQ(0x1af4u, v);
    EXPECT_FALSE(ParseHex("0x", v));
    EXPECT_FALSE(ParseHex("12g4", v));
    EXPECT_FALSE(ParseHex("123456789", v));
    EXPECT_EQ("00ab", FormatHex(0xab, 4));
    EXPECT_EQ("0", FormatHex(0, 1));
}

}  // namespace
}  // namespace svm

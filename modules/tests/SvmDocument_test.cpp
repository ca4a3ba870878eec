#include "svm/SvmDocument.h"

#include <gtest/gtest.h>

#include "ModuleTestSupport.h"
#include "svm/TextUtil.h"

using svmtest::Select;

namespace svm {
namespace {

TEST(SvmDocumentTest, MarkupIsEscapedAndRoundTrips) {
    const std::string nasty = "A&B<C>\"D'E";
    SvmDocument doc;
    doc.AddApplication(doc.AddNonPciDevice({"", nasty, "", "X&Y"}), {"FRMW", nasty, nasty});
    doc.AddFailure("cannot read <" + nasty + ">");
    const std::string xml = doc.ToString();
    EXPECT_EQ(0u, xml.find("<?xml version=\"1.0\" encoding=\"UTF-8\"?>"));
    EXPECT_NE(std::string::npos, xml.find("A&amp;B&lt;C&gt;&quot;D'E")) << xml;
    EXPECT_EQ(nasty, Select(xml, "/SVMInventory/Device/Application")[0]["version"]);
    EXPECT_EQ("X&Y", Select(xml, "/SVMInventory/Device")[0]["FQDD"]);
    EXPECT_EQ(std::vector<std::string>{"cannot read <" + nasty + ">"}, svmtest::Failures(xml));
}

TEST(SvmDocumentTest, DeviceAndOperatingSystemAttributes) {
    SvmDocument doc;
    PciDeviceInfo pci;
    pci.bus = 0x3b;
    pci.device = 0x1f;
    pci.function = 7;
    doc.AddPciDevice(pci);
    doc.AddNonPciDevice({"", "Disk", "", ""});
    OperatingSystemInfo os;
    os.majorVersion = "12";
    doc.AddOperatingSystem(os);
    const std::string xml = doc.ToString();
    auto devices = Select(xml, "/SVMInventory/Device");
    ASSERT_EQ(2u, devices.size());
    EXPECT_EQ("3b 1f 7", devices[0]["bus"] + " " + devices[0]["device"] + " " + devices[0]["function"]);
    EXPECT_EQ(0u, devices[0].count("componentID") + devices[0].count("enum"));
    EXPECT_EQ(1u, devices[1].count("componentID"));  // always present on non-PCI devices
    EXPECT_EQ(0u, devices[1].count("FQDD") + devices[1].count("vendorID"));
    auto found = Select(xml, "/SVMInventory/OperatingSystem");
    EXPECT_EQ(1u, found[0].count("minorVersion"));
    EXPECT_EQ(0u, found[0].count("spMajorVersion") + found[0].count("buildNumber"));
}

TEST(TextUtilTest, CleanTextKeepsDocumentsWellFormed) {
    const std::pair<std::string, std::string> rows[] = {
        {"  1.2.3 \n", "1.2.3"},
        {"a\tb", "a\tb"},
        {std::string("x\0y", 3), "x y"},
        {"\xe2\x82\xac", "\xe2\x82\xac"},
        {"\xc0\xaf", "??"},
        {"\xf4\x90\x80\x80", "????"},
        {"\x7f"
         "ab",
         "ab"},
        {"v1\x01\x1f\xff\xfe\xc3\xa9\xed\xa0\x80", "v1  ??\xc3\xa9???"}};
    for (const auto& row : rows) EXPECT_EQ(row.second, CleanText(row.first)) << row.first;
    uint32_t v = 0;
    EXPECT_TRUE(ParseHex("0x8086\n", v) && v == 0x8086u);
    EXPECT_TRUE(ParseHex("1AF4", v) && v == 0x1af4u);
    for (const char* bad : {"0x", "12g4", "123456789"}) EXPECT_FALSE(ParseHex(bad, v)) << bad;
    EXPECT_EQ("00ab", FormatHex(0xab, 4));
}

}  // namespace
}  // namespace svm

// biosinv, osinv and bmcinv over fake trees, the document writer and its text helpers.
#include "BiosInventory.h"
#include "BmcInventory.h"
#include "ModuleTestSupport.h"
#include "OsInventory.h"
#include "svm/TextUtil.h"

using namespace svmtest;
using ::testing::ElementsAre;
using ::testing::HasSubstr;

namespace svm {
namespace {

TEST(BiosInventoryTest, BiosOneMicrocodeDevicePerSocketAndTheSystemIdOrFailures) {
    FakeRoot root;
    std::string xml = Collect(CollectBiosInventory, root);
    EXPECT_EQ(0u, Select(xml, "//Device").size());
    EXPECT_THAT(Failures(xml),
                ElementsAre(HasSubstr("bios_version"), HasSubstr("product"), HasSubstr("/proc/cpuinfo")));
    auto sockets = ParseMicrocode("processor : 0\nmicrocode : 0xde\n\nprocessor : 1\nmicrocode : 0xde\n");
    ASSERT_EQ(1u, sockets.size());  // no physical id: one socket
    EXPECT_EQ("0 0xde", sockets[0].socket + " " + sockets[0].revision);
    for (auto [file, value] : {std::pair{"bios_vendor", "Example Firmware Inc."},
                               {"bios_version", "2.17.1"},
                               {"bios_date", "03/14/2023"},
                               {"product_sku", "SKU=0A1B;Model=X9"},
                               {"product_name", "Server X9"}})
        root.Write(std::string("/sys/class/dmi/id/") + file, std::string(value) + "\n");
    std::string cpuinfo;
    for (const char* cpu : {"0\t0x2007006", "0\t0x2007006", "1\t0x2007007"})
        cpuinfo += "processor\t: 0\nmodel name\t: Example CPU\nphysical id\t: " + std::string(cpu, 1) +
                   "\nmicrocode\t: " + (cpu + 2) + "\n\n";
    root.Write("/proc/cpuinfo", cpuinfo);
    xml = Collect(CollectBiosInventory, root);
    auto bios = Select(xml, "/SVMInventory/Device[@componentID='159' and @FQDD='BIOS.System.1']/Application");
    ASSERT_EQ(1u, bios.size()) << xml;
    EXPECT_EQ("BIOS|2.17.1|Example Firmware Inc. BIOS (03/14/2023)",
              bios[0]["componentType"] + "|" + bios[0]["version"] + "|" + bios[0]["display"]);
    auto cpus = Select(xml, "/SVMInventory/Device[starts-with(@FQDD,'CPU.')]");
    auto microcode =
        Select(xml, "/SVMInventory/Device[starts-with(@FQDD,'CPU.')]/Application[@componentType='FRMW']");
    ASSERT_EQ(2u, cpus.size());
    ASSERT_EQ(2u, microcode.size());
    EXPECT_EQ("CPU.Socket.0 Example CPU 0x2007006",
              cpus[0]["FQDD"] + " " + cpus[0]["display"] + " " + microcode[0]["version"]);
    EXPECT_EQ("CPU.Socket.1 0x2007007", cpus[1]["FQDD"] + " " + microcode[1]["version"]);
    EXPECT_THAT(Failures(xml), ElementsAre());
    // The system id is the SKU, else the product name, else a failure.
    EXPECT_EQ("SKU=0A1B;Model=X9", Select(xml, "/SVMInventory/System")[0]["systemID"]);
    root.Write("/sys/class/dmi/id/product_sku", "To Be Filled By O.E.M.\n");
    EXPECT_EQ("Server X9",
              Select(Collect(CollectBiosInventory, root), "/SVMInventory/System")[0]["systemID"]);
    root.Write("/sys/class/dmi/id/product_name", "System Product Name\n");
    xml = Collect(CollectBiosInventory, root);
    EXPECT_EQ(0u, Select(xml, "//System").size());
    EXPECT_THAT(Failures(xml), ElementsAre(HasSubstr("product_sku")));
}

TEST(OsInventoryTest, ReadsOsReleaseOrItsFallbackOrReportsAFailure) {
    FakeRoot root;
    EXPECT_THAT(
        Failures(Collect(CollectOsInventory, root)),
        ElementsAre(::testing::AllOf(HasSubstr("/etc/os-release"), HasSubstr("/usr/lib/os-release"))));
    root.Write("/etc/os-release", "garbage\n");
    const std::string xml = Collect(CollectOsInventory, root);
    EXPECT_THAT(Failures(xml), ElementsAre(HasSubstr("os-release names no operating system")));
    EXPECT_EQ(0u, Select(xml, "//OperatingSystem").size());
    std::filesystem::remove(root.path + "/etc/os-release");  // the fallback is read
    root.Write("/usr/lib/os-release",
               "PRETTY_NAME=\"Example Linux 9.4 (Blue Onyx)\"\nNAME=\"Example Linux\"\n"
               "VERSION_ID=\"9.4\"\nID=example\n# comment\n");
    root.Write("/proc/sys/kernel/arch", "aarch64\n");
    auto os = Select(Collect(CollectOsInventory, root), "/SVMInventory/OperatingSystem");
    ASSERT_EQ(1u, os.size());
    EXPECT_EQ("Example Linux|example|Example Linux 9.4 (Blue Onyx)|9|4|aarch64",
              os[0]["osVendor"] + "|" + os[0]["osCode"] + "|" + os[0]["name"] + "|" + os[0]["majorVersion"] +
                  "|" + os[0]["minorVersion"] + "|" + os[0]["osArch"]);
    EXPECT_EQ(0u, os[0].count("buildNumber"));
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

struct FakeTransport : IBmcTransport {
    bool ok = true;
    std::vector<uint8_t> answer;
    std::vector<int> asked;  // netfn, cmd of each request
    bool Request(uint8_t netfn, uint8_t cmd, const std::vector<uint8_t>&, std::vector<uint8_t>& response,
                 std::string& error) override {
        asked.insert(asked.end(), {netfn, cmd});
        error = "IPMI request failed with status 320";
        response = answer;
        return ok;
    }
};

TEST(BmcInventoryTest, GetDeviceIdGivesTheFirmwareRevisionOrAFailure) {
    FakeRoot root;
    FakeTransport transport;
    EXPECT_THAT(Failures(Collect(CollectBmcInventory, root, transport)),
                ElementsAre(HasSubstr("no IPMI device")));
    EXPECT_TRUE(transport.asked.empty());
    root.Write("/sys/firmware/dmi/entries/38-0/type", "38\n");  // an SMBIOS IPMI record is enough to ask
    transport.ok = false;
    EXPECT_THAT(Failures(Collect(CollectBmcInventory, root, transport)), ElementsAre(HasSubstr("320")));
    // cc, device id, revision, fw major (bit 7: update in progress), fw minor (BCD), IPMI version,
    // device support, manufacturer (IANA, 3 bytes LS first), product id (2 bytes LS first), ...
    const struct {
        const char* name;
        std::vector<uint8_t> answer;
        const char* result;  // device display | version | application display, or the failure
    } rows[] = {
        {"full answer",
         {0x00, 0x20, 0x81, 0x83, 0x30, 0x02, 0xbf, 0xa2, 0x02, 0x00, 0x00, 0x01, 0x00, 0x00, 0x00, 0x00},
         "Management controller (manufacturer IANA 674, product 0x0100)|3.30|Management controller firmware"},
        {"Supermicro, no auxiliary revision",
         {0x00, 0x20, 0x01, 0x01, 0x73, 0x02, 0xbf, 0x7c, 0x2a, 0x00, 0x3d, 0x09},
         "Management controller (manufacturer IANA 10876, product 0x093d)|1.73|Management controller "
         "firmware"},
        {"largest major",
         {0x00, 0x20, 0x01, 0x7f, 0x99},
         "Management controller|127.99|Management controller firmware"},
        {"minor not BCD",
         {0x00, 0x20, 0x01, 0x01, 0x1a, 0x02, 0xbf, 0xa2, 0x02, 0x00, 0x00, 0x01},
         "Management controller (manufacturer IANA 674, product 0x0100)|1.1a|"
         "Management controller firmware (minor revision 0x1a is not BCD: shown in hex)"},
        {"completion code", {0xc1}, "completion code 0xc1"},
        {"empty", {}, "empty Get Device ID answer"},
        {"short", {0x00, 0x20, 0x01, 0x02}, "too short (3 data bytes)"},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        transport = {};
        transport.answer = row.answer;
        const std::string xml = Collect(CollectBmcInventory, root, transport);
        EXPECT_EQ((std::vector<int>{0x06, 0x01}), transport.asked);
        auto devices = Select(xml, "/SVMInventory/Device[@FQDD='BMC.Embedded.1']");
        auto apps =
            Select(xml, "/SVMInventory/Device[@FQDD='BMC.Embedded.1']/Application[@componentType='FRMW']");
        if (devices.size() == 1 && apps.size() == 1) {
            EXPECT_THAT(Failures(xml), ElementsAre());
            EXPECT_EQ(devices[0]["display"] + "|" + apps[0]["version"] + "|" + apps[0]["display"],
                      row.result);
        } else {
            EXPECT_THAT(Failures(xml), ElementsAre(HasSubstr(row.result))) << xml;
        }
    }
    // The library's failure names the request in hex.
    EXPECT_EQ(IpmiRequestFailure(0x06, 0x01, 320),
              "IPMI request (netfn 0x06, cmd 0x01) failed with status 320");
    EXPECT_EQ(IpmiRequestFailure(0x30, 0xbd, 3), "IPMI request (netfn 0x30, cmd 0xbd) failed with status 3");
}

// Whatever a module reads, the document stays well-formed: markup is escaped and bytes that
// XML cannot carry are replaced, in attributes and in failure messages alike.
TEST(SvmDocumentTest, ValuesAreEscapedAndCleanedAndRoundTrip) {
    const std::string nasty = "A&B<C>\"D'E\x01\xff!";
    SvmDocument doc;
    doc.AddApplication(doc.AddNonPciDevice({"", nasty, "", "X&Y\x02"}), {"FRMW", nasty, nasty});
    doc.AddFailure("cannot read <" + nasty + ">");
    const std::string xml = doc.ToString();
    EXPECT_EQ(0u, xml.find("<?xml version=\"1.0\" encoding=\"UTF-8\"?>"));
    EXPECT_NE(std::string::npos, xml.find("A&amp;B&lt;C&gt;&quot;D'E ?!")) << xml;
    EXPECT_EQ("A&B<C>\"D'E ?!", Select(xml, "/SVMInventory/Device/Application")[0]["version"]);
    EXPECT_EQ("X&Y", Select(xml, "/SVMInventory/Device")[0]["FQDD"]);
    EXPECT_THAT(Failures(xml), ElementsAre("cannot read <A&B<C>\"D'E ?!>"));
}

TEST(TextUtilTest, CleanTextKeepsDocumentsWellFormed) {
    const std::pair<std::string, std::string> rows[] = {
        {"  1.2.3 \n", "1.2.3"},
        {"a\tb", "a\tb"},
        {std::string("x\0y", 3), "x y"},
        {"\xe2\x82\xac", "\xe2\x82\xac"},
        {"\xc0\xaf", "??"},
        {"\xf4\x90\x80\x80", "????"},
        {"\177ab", "ab"},
        {"v1\x01\x1f\xff\xfe\xc3\xa9\xed\xa0\x80", "v1  ??\xc3\xa9???"}};
    for (const auto& row : rows) EXPECT_EQ(row.second, CleanText(row.first)) << row.first;
    uint32_t v = 0;
    EXPECT_TRUE(ParseHex("0x8086\n", v) && v == 0x8086u && ParseHex("1AF4", v) && v == 0x1af4u);
    for (const char* bad : {"0x", "12g4", "123456789"}) EXPECT_FALSE(ParseHex(bad, v)) << bad;
    EXPECT_EQ("00ab", FormatHex(0xab, 4));
}

}  // namespace
}  // namespace svm

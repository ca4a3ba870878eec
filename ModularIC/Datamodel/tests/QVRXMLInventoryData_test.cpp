#include "QVRXMLInventoryData.h"

#include <gtest/gtest.h>
#include <libxml/globals.h>
#include <libxml/parser.h>
#include <unistd.h>

#include <chrono>
#include <cstdio>
#include <fstream>

#include "DatamodelTestSupport.h"
#include "QVRInventoryDataFactory.h"

namespace {

const char* const kInvalid = "Invalid inventory XML root element.";
typedef std::vector<std::string> Strings;

// Summaries (display|componentID|componentType|version|deviceType|status|errorMsg)
// of the records one output gives as a run would, then "dropped" if the output
// is refused, "failed" if PopulateData fails, and anything printed.
Strings Module(const std::string& output, Records* kept = nullptr) {
    Records own;
    Records& out = kept != nullptr ? *kept : own;
    ::testing::internal::CaptureStdout();
    ::testing::internal::CaptureStderr();
    std::string identity = "mod", text = output;
    std::unique_ptr<IQVRInventoryRawData> data(QVRInventoryDataFactory()(identity, text, nullptr));
    const bool result = data != nullptr && data->PopulateData(out.items);
    const std::string printed =
        ::testing::internal::GetCapturedStdout() + ::testing::internal::GetCapturedStderr();
    Strings lines;
    for (const CDeviceInfo* r : out.items)
        lines.push_back(r->getDisplay() + "|" + r->getComponentID() + "|" + r->getComponentType() + "|" +
                        r->getVersion() + "|" + std::to_string(r->getDeviceType()) + "|" +
                        std::to_string(r->getStatus()) + "|" + r->getErrorMsg());
    if (data == nullptr) lines.push_back("dropped");
    if (data != nullptr && !result) lines.push_back("failed");
    if (!printed.empty()) lines.push_back(printed);
    return lines;
}

std::string Noise(unsigned int state, size_t size) {
    std::string noise;
    while (noise.size() < size)
        noise += static_cast<char>(((state = state * 1103515245u + 12345u) >> 24) | 1);
    return noise;
}

TEST(ModuleOutputElements, EachElementRule) {
    const std::string app = "<Application componentType=\"FRMW\" version=\"1\"/>", fail = "mod||||0|1|";
    const std::string sys = "SystemInventory|002|||0|-1|", nic = "NIC firmware|1|FRMW|1|1|0|";
    std::string many = "<SVMInventory>";  // long enough to be parsed in several pieces
    for (int i = 0; i < 1000; ++i) many += PciDevice(std::to_string(i), "1");
    // clang-format off
    const std::vector<std::pair<std::string, Strings>> rows = {
        // Only component id 159 may carry a BIOS application.
        {Inventory(NonPciDevice("158", "1", "F", "BIOS") + NonPciDevice("159", "1", "F", "BIOS") +
                   PciDevice("158", "1", "BIOS") + PciDevice("159", "2", "BIOS")),
         {"Disk app|159|BIOS|1|2|0|", "NIC firmware|159|BIOS|2|1|0|", "failed"}},
        {Inventory("<Device componentID=\"5\"><Application componentType=\"FRMW\" version=\"1\""
                   " display=\"a\"/><Application componentType=\"DRVR\" version=\"2\" display=\"b\"/>"
                   "<Application componentType=\"BIOS\" version=\"3\" display=\"c\"/></Device>"),
         {"b|5|DRVR|2|2|0|"}},  // the last accepted application wins
        {Inventory("<Device vendorID=\"8086\" componentID=\"1\"/><Device componentID=\"2\"><Other/>"
                   "</Device>"),
         {"failed"}},
        {Inventory("<Device vendorID=\"\" componentID=\"7\">" + app +
                   "</Device><Device><Application/></Device>"),
         {"|7|FRMW|1|2|0|", "||||2|0|"}},
        {Inventory("<SPStatus result=\"false\"><Message>first</Message><Message>disk &amp; controller "
                   "<b>not</b> found</Message></SPStatus><SPStatus result=\"false\"/>"),
         {fail + "disk & controller  found", fail}},
        {Inventory("<SPStatus result=\"true\"><Message>m</Message></SPStatus><SPStatus result=\"False\"/>"),
         {"failed"}},
        {Inventory("<System systemID=\"\"/><System/><System systemID=\"0A1B\"/>"), {sys}},
        {Inventory("<Unknown/><Other a=\"1\"/><Group><Device componentID=\"1\">" + app + "</Device></Group>"),
         {}},
        {"<SVMInventory/>", {}},
        {"<Inventory><Device componentID=\"1\">" + app + "</Device></Inventory><!-- <SVMInventory -->",
         {"failed"}},
        // Output without the root tag is dropped without a record.
        {"Segmentation fault\n", {"dropped"}}, {"<Inventory/>", {"dropped"}}, {Noise(99, 1 << 20), {"dropped"}},
        {Inventory("<Device componentID=\"&lt;1&gt;\"><Application componentType=\"FRMW\" version=\"&lt;!"
                   "[CDATA[x]]&gt;\" display=\"a &amp; &quot;b&quot; &#x3C;/c&#x3E;\"/></Device>"),
         {"a & \"b\" </c>|<1>|FRMW|<![CDATA[x]]>|2|0|"}},
        {"<!DOCTYPE SVMInventory [<!ENTITY v \"1.2.3\"><!ENTITY m \"disk &amp; more\">]><SVMInventory><Device"
         " componentID=\"1\"><Application componentType=\"FRMW\" version=\"&v;-&v;\"/></Device><SPStatus"
         " result=\"false\"><Message>&m;</Message></SPStatus></SVMInventory>",
         {"|1|FRMW|1.2.3-1.2.3|2|0|", fail + "disk & more"}},
        // Document order is kept; the result is that of the last child of the root, text included.
        {Inventory(PciDevice("1", "1") + "<System systemID=\"S\"/><SPStatus result=\"false\"/>" +
                   NonPciDevice("2", "1", "F")),
         {nic, sys, fail, "Disk app|2|FRMW|1|2|0|", "failed"}},
        {"<SVMInventory>" + PciDevice("1", "1") + "<Unknown/></SVMInventory>", {nic, "failed"}},
        {"<SVMInventory><Unknown/><System systemID=\"1\"/></SVMInventory>", {sys}},
        {"<SVMInventory><!--c--><System systemID=\"1\"/></SVMInventory><!--end--><?pi x?>", {sys}},
        {"<SVMInventory><System systemID=\"1\"/><?pi x?></SVMInventory>", {sys, "failed"}},
        {"<SVMInventory><System systemID=\"1\"/><!--c--></SVMInventory>", {sys, "failed"}},
        // Entity content is not taken for children of the root or of a device.
        {"<!DOCTYPE SVMInventory [<!ENTITY s \"<System systemID='1'/>\"><!ENTITY a '" + app +
             "'>]><SVMInventory><Device componentID=\"1\">&a;</Device>&s;</SVMInventory>",
         {"failed"}},
        // Empty output is an execution failure; a cut document an invalid one.
        {"", {fail + "Configured program execution failure", "failed"}},
        {"garbage <SVMInventory", {fail + kInvalid, "failed"}},
        {many + "<junk>", {fail + kInvalid, "failed"}}};
    // clang-format on
    for (const auto& row : rows) EXPECT_EQ(Module(row.first), row.second) << row.first.substr(0, 200);
}

TEST(ModuleOutputElements, ElementsCarryTheirFieldsAndTheHexAddress) {
    Records out;
    Module(Inventory(PciDevice("101", "16.5.0", "FRMW", "X550") +
                     NonPciDevice("159", "2.1.7", "BIOS.Setup.1-1") + OperatingSystem("Debian", "12")),
           &out);
    ASSERT_EQ(out.size(), 3u);
    ASSERT_EQ(out[2].getDependencyOS().size(), 1u);
    const SPCIInfo& pci = out[0].getPCIInfo();
    const SOSInfo& os = out[2].getDependencyOS()[0];
    EXPECT_EQ((Strings{pci.componentID, pci.deviceID, pci.subDeviceID, pci.vendorID, pci.subVendorID,
                       pci.display, out[0].getEnumId(), out[1].getDeviceName(), out[1].getFQDDInfo(),
                       out[1].getEnumId(), os.osVendor, os.osArch, os.majorVersion, os.minorVersion,
                       os.spMajorVersion, os.spMinorVersion, os.name, os.buildNumber, os.osCode}),
              (Strings{"101", "1521", "1f60", "8086", "1028", "X550", "e1", "Disk", "BIOS.Setup.1-1", "e2",
                       "Debian", "x64", "12", "0", "1", "2", "Debian", "3", "LIN"}));
    EXPECT_EQ(out[0].getBDFInfo(), 0x3b0001u);
    // clang-format off
    const std::vector<std::pair<const char*, unsigned char>> hex = {
        {"3B", 0x3b}, {"0x1f", 0x1f}, {"10", 0x10}, {"", 0}, {"zz", 0}, {"g1", 0}, {"1g", 1}, {" 7", 7},
        {"1ff", 0xff}, {"99999999999999999999999", 0xff}};
    // clang-format on
    for (const auto& row : hex)
        EXPECT_EQ(QVRXMLInventoryData::ReadHexByte(row.first), row.second) << row.first;
}

// Every operating-system record carries all entries of its document (the data
// model keeps the first), sharing one list instead of growing quadratically.
TEST(ModuleOutputElements, OperatingSystemRecordsShareOneListOfAllEntries) {
    std::string body;
    for (int i = 0; i < 20000; ++i) body += OperatingSystem("os", "1");
    Records many;
    Module(Inventory(body), &many);
    ASSERT_EQ(many.size(), 20000u);
    EXPECT_EQ(many[19999].getDependencyOS().size(), 20000u);
    EXPECT_EQ(&many[0].getDependencyOS(), &many[19999].getDependencyOS());
}

// Bad module output never crashes, throws, leaks (sanitizer build) or prints.
// One large entity referred to many times, in text or in an attribute, would
// expand to a gigabyte when read: such a document is refused at once (entities
// of ordinary size are still expanded: EachElementRule).
TEST(BadModuleOutput, MalformedOrHostileDocumentsBecomeOneInvalidRecordQuickly) {
    std::string bomb = "<!DOCTYPE SVMInventory [<!ENTITY a0 \"lollollollollollollollollollollol\">", open,
                close;
    for (int i = 1; i <= 10; ++i) {
        bomb += "<!ENTITY a" + std::to_string(i) + " \"";
        for (int k = 0; k < 10; ++k) bomb += "&a" + std::to_string(i - 1) + ";";
        bomb += "\">";
    }
    for (int i = 0; i < 5000; ++i) open += "<Application>", close += "</Application>";
    std::string noise = Noise(5, 1 << 20);
    noise.insert(noise.size() / 2, "<SVMInventory>");
    const std::string whole = Inventory(PciDevice("1", "1") + "<System systemID=\"1\"/>");
    std::string refs;
    for (int i = 0; i < 10000; ++i) refs += "&e;";
    const std::string dtd = "<!DOCTYPE SVMInventory [<!ENTITY e \"" + std::string(100000, 'e') + "\">]>";
    // clang-format off
    std::vector<std::string> corpus = {
        "<SVMInventory>", "<SVMInventory><Device></SVMInventory>", "<SVMInventory/><SVMInventory/>",
        "<SVMInventory><Device a=\"1\" a=\"2\"/></SVMInventory>",
        "<SVMInventory><Device a=\"<\"/></SVMInventory>",
        "<SVMInventory>&nbsp;</SVMInventory>", "<SVMInventory>\x01</SVMInventory>",
        "<SVMInventory>\xff\xfe</SVMInventory>", "<SVMInventory><![CDATA[</SVMInventory>",
        "<?xml version=\"1.0\" encoding=\"EBCDIC-US\"?><SVMInventory/>",
        "<!DOCTYPE SVMInventory [<!ENTITY a \"&b;\"><!ENTITY b \"&a;\">]><SVMInventory>&a;</SVMInventory>",
        "<!DOCTYPE SVMInventory [<!ENTITY e \"<Device>\">]><SVMInventory>&e;</SVMInventory>",
        "text before <SVMInventory/>", "<SVMInventory/> text after",
        std::string("<SVMInventory>\0</SVMInventory>", 30),
        bomb + "]><SVMInventory><SPStatus result=\"false\"><Message>&a10;</Message></SPStatus>"
        "</SVMInventory>",
        noise, "<SVMInventory><Device>" + open + close + "</Device></SVMInventory>",
        "<SVMInventory><Device componentID=\"" + std::string(11 << 20, 'x') + "\"/></SVMInventory>",
        dtd + "<SVMInventory><SPStatus result=\"false\"><Message>" + refs + "</Message></SPStatus></SVMInventory>",
        dtd + "<SVMInventory><Device componentID=\"1\"><Application version=\"" + refs + "\"/></Device></SVMInventory>",
        dtd + "<SVMInventory note=\"" + refs + "\"/>"};
    // clang-format on
    for (size_t cut = whole.find("<SVMInventory") + 13; cut + 2 < whole.size(); cut += 9)
        corpus.push_back(whole.substr(0, cut));
    const auto start = std::chrono::steady_clock::now();
    for (const std::string& text : corpus)
        EXPECT_EQ(Module(text), (Strings{std::string("mod||||0|1|") + kInvalid, "failed"}))
            << text.substr(0, 80);
    EXPECT_LT(std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count(), 20.0);
    const std::string big(4 << 20, 'v');  // within libxml2's limit: kept whole
    Records out;
    Module(Inventory("<Device><Application componentType=\"FRMW\" version=\"" + big + "\"/></Device>"), &out);
    ASSERT_EQ(out.size(), 1u);
    EXPECT_EQ(out[0].getVersion(), big);
    // libxml2's error handlers are process-wide: silencing the module's parses
    // must not silence the rest of the process.
    ::testing::internal::CaptureStderr();
    EXPECT_EQ(xmlParseDoc(reinterpret_cast<const xmlChar*>("<broken")), nullptr);
    EXPECT_NE(::testing::internal::GetCapturedStderr(), "");
}

// The module path never reads a file through an entity, even
// when the process switched entity loading on for itself.
TEST(BadModuleOutput, ExternalEntitiesAreNeverRead) {
    char name[] = "/tmp/qvrsecretXXXXXX";
    const int fd = mkstemp(name);
    ASSERT_NE(fd, -1);
    close(fd);
    std::ofstream(name) << "<!ENTITY leak \"TOP-SECRET\">TOP-SECRET";
    const std::string file = std::string("file://") + name;
    // clang-format off
    const std::string docs[] = {
        "<!DOCTYPE SVMInventory [<!ENTITY x SYSTEM \"" + file + "\"><!ENTITY % p SYSTEM \"" + file +
        "\"> %p;]>"
        "<SVMInventory><Device display=\"&x;\"><Application componentType=\"FRMW\" display=\"&x;\"/></Device>"
        "<SPStatus result=\"false\"><Message>&x;</Message></SPStatus></SVMInventory>",
        "<!DOCTYPE SVMInventory SYSTEM \"" + file + "\"><SVMInventory><SPStatus result=\"false\">"
        "<Message>&leak;</Message></SPStatus></SVMInventory>"};
    // clang-format on
    const int substitute = xmlSubstituteEntitiesDefault(1);
    const int loadDefault = xmlLoadExtDtdDefaultValue;
    for (int loading : {0, XML_DETECT_IDS | XML_COMPLETE_ATTRS}) {
        xmlLoadExtDtdDefaultValue = loading;
        for (const std::string& doc : docs) {
            Records out;
            std::string all;
            for (const std::string& line : Module(doc, &out)) all += line;
            for (const CDeviceInfo* r : out.items) all += r->getDeviceName();
            EXPECT_EQ(all.find("TOP-SECRET"), std::string::npos);
        }
    }
    xmlSubstituteEntitiesDefault(substitute);
    xmlLoadExtDtdDefaultValue = loadDefault;
    std::remove(name);
}

}  // namespace

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
#include "QVROptionKeys.h"
#include "QVRXMLParser.h"

namespace {

const char* const kInvalid = "Invalid inventory XML root element.";
typedef std::vector<std::string> Strings;

// Runs one output through the factory and the parser as a run would; returns
// PopulateData's answer. Whatever is printed meanwhile goes to *printed.
bool RunModule(const std::string& output, Records& out, QVRDataModelFilter* filter = nullptr,
               std::string* printed = nullptr, bool* stored = nullptr) {
    ::testing::internal::CaptureStdout();
    ::testing::internal::CaptureStderr();
    std::string identity = "mod", text = output;
    std::unique_ptr<IQVRInventoryRawData> data(QVRInventoryDataFactory()(identity, text, filter));
    const bool result = data != nullptr && data->PopulateData(out.items);
    const std::string both =
        ::testing::internal::GetCapturedStdout() + ::testing::internal::GetCapturedStderr();
    if (printed != nullptr) *printed = both;
    if (stored != nullptr) *stored = data != nullptr;
    return result;
}

// display|componentID|componentType|version|deviceType|status|errorMsg of each record.
Strings Summaries(const Records& out) {
    Strings lines;
    for (const CDeviceInfo* r : out.items)
        lines.push_back(r->getDisplay() + "|" + r->getComponentID() + "|" + r->getComponentType() + "|" +
                        r->getVersion() + "|" + std::to_string(r->getDeviceType()) + "|" +
                        std::to_string(r->getStatus()) + "|" + r->getErrorMsg());
    return lines;
}

TEST(ModuleOutputElements, EachElementRule) {
    const std::string app = "<Application componentType=\"FRMW\" version=\"1\"/>", fail = "mod||||0|1|";
    const std::string sys = "SystemInventory|002|||0|-1|", nic = "NIC firmware|1|FRMW|1|1|0|";
    // clang-format off
    const std::vector<std::tuple<std::string, bool, Strings>> rows = {
        // Only component id 159 may carry a BIOS application.
        {Inventory(NonPciDevice("158", "1", "F", "BIOS") + NonPciDevice("159", "1", "F", "BIOS") +
                   PciDevice("158", "1", "BIOS") + PciDevice("159", "2", "BIOS")),
         false, {"Disk app|159|BIOS|1|2|0|", "NIC firmware|159|BIOS|2|1|0|"}},
        {Inventory("<Device componentID=\"5\"><Application componentType=\"FRMW\" version=\"1\""
                   " display=\"a\"/><Application componentType=\"DRVR\" version=\"2\" display=\"b\"/>"
                   "<Application componentType=\"BIOS\" version=\"3\" display=\"c\"/></Device>"),
         true, {"b|5|DRVR|2|2|0|"}},  // the last accepted application wins
        {Inventory("<Device vendorID=\"8086\" componentID=\"1\"/><Device componentID=\"2\"><Other/>"
                   "</Device>"),
         false, {}},
        {Inventory("<Device vendorID=\"\" componentID=\"7\">" + app +
                   "</Device><Device><Application/></Device>"),
         true, {"|7|FRMW|1|2|0|", "||||2|0|"}},
        {Inventory("<SPStatus result=\"false\"><Message>first</Message><Message>disk &amp; controller "
                   "<b>not</b> found</Message></SPStatus><SPStatus result=\"false\"/>"),
         true, {fail + "disk & controller  found", fail}},
        {Inventory("<SPStatus result=\"true\"><Message>m</Message></SPStatus><SPStatus result=\"False\"/>"),
         false, {}},
        {Inventory("<System systemID=\"\"/><System/><System systemID=\"0A1B\"/>"), true, {sys}},
        {Inventory("<Unknown/><Other a=\"1\"/>"), true, {}},
        {"<SVMInventory/>", true, {}},
        {"<Inventory><Device componentID=\"1\">" + app + "</Device></Inventory><!-- <SVMInventory -->",
         false, {}},
        {Inventory("<Group><Device componentID=\"1\">" + app + "</Device></Group>"), true, {}},
        {Inventory("<Device componentID=\"&lt;1&gt;\"><Application componentType=\"FRMW\" version=\"&lt;!"
                   "[CDATA[x]]&gt;\" display=\"a &amp; &quot;b&quot; &#x3C;/c&#x3E;\"/></Device>"),
         true, {"a & \"b\" </c>|<1>|FRMW|<![CDATA[x]]>|2|0|"}},
        {"<!DOCTYPE SVMInventory [<!ENTITY v \"1.2.3\"><!ENTITY m \"disk &amp; more\">]><SVMInventory><Device"
         " componentID=\"1\"><Application componentType=\"FRMW\" version=\"&v;\"/></Device><SPStatus"
         " result=\"false\"><Message>&m;</Message></SPStatus></SVMInventory>",
         true, {"|1|FRMW|1.2.3|2|0|", fail + "disk & more"}},
        // Document order is kept; the result is that of the last child of the root, text included.
        {Inventory(PciDevice("1", "1") + "<System systemID=\"S\"/><SPStatus result=\"false\"/>" +
                   NonPciDevice("2", "1", "F")),
         false, {nic, sys, fail, "Disk app|2|FRMW|1|2|0|"}},
        {"<SVMInventory>" + PciDevice("1", "1") + "<Unknown/></SVMInventory>", false, {nic}},
        {"<SVMInventory><Unknown/><System systemID=\"1\"/></SVMInventory>", true, {sys}},
        // Empty output is an execution failure; a cut document an invalid one.
        {"", false, {fail + "Configured program execution failure"}},
        {"garbage <SVMInventory", false, {fail + kInvalid}},
        {ManyDevices(1000, 0) + "<junk>", false, {fail + kInvalid}}};
    // clang-format on
    for (const auto& row : rows) {
        Records out;
        std::string printed;
        EXPECT_EQ(RunModule(std::get<0>(row), out, nullptr, &printed), std::get<1>(row)) << std::get<0>(row);
        EXPECT_EQ(Summaries(out), std::get<2>(row)) << std::get<0>(row);
        EXPECT_EQ(printed, "");
    }
}

TEST(ModuleOutputElements, DevicesCarryTheirIdentifiersAndHexAddress) {
    Records out;
    RunModule(Inventory(PciDevice("101", "16.5.0", "FRMW", "X550") +
                        NonPciDevice("159", "2.1.7", "BIOS.Setup.1-1")),
              out);
    ASSERT_EQ(out.size(), 2u);
    const SPCIInfo& pci = out[0].getPCIInfo();
    EXPECT_EQ(
        (Strings{pci.componentID, pci.deviceID, pci.subDeviceID, pci.vendorID, pci.subVendorID, pci.display}),
        (Strings{"101", "1521", "1f60", "8086", "1028", "X550"}));
    EXPECT_EQ(out[0].getBDFInfo(), 0x3b0001u);
    EXPECT_EQ(out[0].getEnumId(), "e1");
    EXPECT_EQ((Strings{out[1].getDeviceName(), out[1].getFQDDInfo(), out[1].getEnumId()}),
              (Strings{"Disk", "BIOS.Setup.1-1", "e2"}));
    // clang-format off
    const std::vector<std::pair<const char*, unsigned char>> hex = {
        {"3b", 0x3b}, {"3B", 0x3b}, {"0x1f", 0x1f}, {"10", 0x10}, {"", 0}, {"zz", 0}, {"g1", 0}, {"1g", 1},
        {" 7", 7},         {"1ff", 0xff}, {"99999999999999999999999", 0xff}};
    // clang-format on
    for (const auto& row : hex)
        EXPECT_EQ(QVRXMLInventoryData::ReadHexByte(row.first), row.second) << row.first;
}

TEST(ModuleOutputElements, EveryOperatingSystemRecordCarriesAllEntries) {
    Records out;
    RunModule(
        Inventory(OperatingSystem("Debian", "12") + PciDevice("1", "1") + OperatingSystem("Linux", "6")),
        out);
    ASSERT_EQ(out.size(), 3u);
    for (size_t i : {0, 2}) {
        EXPECT_EQ(out[i].getDisplay() + "|" + out[i].getComponentID(), "OperatingSystem|001");
        ASSERT_EQ(out[i].getDependencyOS().size(), 2u);
        EXPECT_EQ(out[i].getDependencyOS()[1].name, "Linux");
    }
    const SOSInfo& e = out[0].getDependencyOS()[0];
    EXPECT_EQ((Strings{e.osVendor, e.osArch, e.majorVersion, e.minorVersion, e.spMajorVersion,
                       e.spMinorVersion, e.name, e.buildNumber, e.osCode}),
              (Strings{"Debian", "x64", "12", "0", "1", "2", "Debian", "3", "LIN"}));
    // Many elements share one list instead of growing quadratically.
    std::string body;
    for (int i = 0; i < 20000; ++i) body += OperatingSystem("os", "1");
    Records many;
    RunModule(Inventory(body), many);
    ASSERT_EQ(many.size(), 20000u);
    EXPECT_EQ(&many[0].getDependencyOS(), &many[19999].getDependencyOS());
}

TEST(ModuleOutputElements, FilterAppliesToDevicesOnly) {
    QVRArgumentList args;
    args.insertValue(QVR_OPT_COMPID, "159");
    args.insertValue(QVR_OPT_COMPTYPE, "FRMW");
    QVRDataModelFilter filter(true);
    filter.Initialize(&args);
    Records out;
    RunModule(Inventory(NonPciDevice("159", "1", "F") + NonPciDevice("159", "1", "F", "BIOS") +
                        PciDevice("158", "1") + "<System systemID=\"S\"/><SPStatus result=\"false\"/>" +
                        OperatingSystem("A", "1")),
              out, &filter);
    EXPECT_EQ(Summaries(out), (Strings{"Disk app|159|FRMW|1|2|0|", "SystemInventory|002|||0|-1|",
                                       "mod||||0|1|", "OperatingSystem|001|||0|-1|"}));
}

std::string Noise(unsigned int state, size_t size) {
    std::string noise;
    while (noise.size() < size)
        noise += static_cast<char>(((state = state * 1103515245u + 12345u) >> 24) | 1);
    return noise;
}

// Bad module output never crashes, throws, leaks (sanitizer build) or prints.
TEST(BadModuleOutput, OutputWithoutTheRootTagIsDroppedWithoutARecord) {
    const std::string noise = Noise(99, 1 << 20);
    ASSERT_EQ(noise.find("<SVMInventory"), std::string::npos);
    for (const std::string& text :
         {std::string("Segmentation fault\n"), std::string("<Inventory/>"), noise}) {
        Records out;
        std::string printed;
        bool stored = true;
        RunModule(text, out, nullptr, &printed, &stored);
        EXPECT_FALSE(stored);
        EXPECT_EQ(out.size() + printed.size(), 0u);
    }
}

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
        "<SVMInventory><Device componentID=\"" + std::string(11 << 20, 'x') + "\"/></SVMInventory>"};
    // clang-format on
    for (size_t cut = whole.find("<SVMInventory") + 13; cut + 2 < whole.size(); cut += 9)
        corpus.push_back(whole.substr(0, cut));
    const auto start = std::chrono::steady_clock::now();
    for (const std::string& text : corpus) {
        Records out;
        std::string printed;
        EXPECT_FALSE(RunModule(text, out, nullptr, &printed));
        EXPECT_EQ(Summaries(out), Strings{std::string("mod||||0|1|") + kInvalid}) << text.substr(0, 80);
        EXPECT_EQ(printed, "");
    }
    EXPECT_LT(std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count(), 20.0);
    const std::string big(4 << 20, 'v');  // within libxml2's limit: kept whole
    Records out;
    RunModule(Inventory("<Device><Application componentType=\"FRMW\" version=\"" + big + "\"/></Device>"),
              out);
    ASSERT_EQ(out.size(), 1u);
    EXPECT_EQ(out[0].getVersion(), big);
}

// The wrapper and the module path never read a file through an entity, even
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
            QVRXMLParser parser(doc);
            EXPECT_EQ(parser.RawXMLDumpNode(parser.GetRootNode()).find("TOP-SECRET"), std::string::npos);
            Records out;
            RunModule(doc, out);
            for (const CDeviceInfo* r : out.items)
                EXPECT_EQ((r->getErrorMsg() + r->getDisplay() + r->getDeviceName()).find("TOP-SECRET"),
                          std::string::npos);
        }
    }
    xmlSubstituteEntitiesDefault(substitute);
    xmlLoadExtDtdDefaultValue = loadDefault;
    std::remove(name);
}

}  // namespace

#include "QVRXMLInventoryData.h"

#include <gtest/gtest.h>

#include <string>

#include "DatamodelTestSupport.h"
#include "QVRInventoryDataFactory.h"
#include "QVROptionKeys.h"
#include "QVRXMLParser.h"

namespace {

// Parses output as module "mod" would deliver it; returns PopulateData's answer.
bool Populate(const std::string& output, Records& out, QVRDataModelFilter* filter = nullptr) {
    QVRXMLInventoryData data("mod", output, filter);
    return data.PopulateData(out.items);
}

// ---- Devices -------------------------------------------------------------

TEST(DeviceElement, PciDeviceCarriesItsIdentifiersAndAddress) {
    Records out;
    Populate(Inventory(PciDevice("101", "16.5.0", "FRMW", "3b", "X550")), out);
    ASSERT_EQ(out.size(), 1u);
    const CDeviceInfo& r = out[0];
    EXPECT_EQ(r.getDeviceType(), 1);
    EXPECT_EQ(r.getStatus(), 0);
    EXPECT_EQ(r.getPCIInfo().componentID, "101");
    EXPECT_EQ(r.getPCIInfo().vendorID, "8086");
    EXPECT_EQ(r.getPCIInfo().deviceID, "1521");
    EXPECT_EQ(r.getPCIInfo().subVendorID, "1028");
    EXPECT_EQ(r.getPCIInfo().subDeviceID, "1f60");
    EXPECT_EQ(r.getPCIInfo().display, "X550");
    EXPECT_EQ(r.getComponentID(), "101");
    EXPECT_EQ(r.getDeviceName(), "");
    EXPECT_EQ(r.getBDF().bus, 0x3b);
    EXPECT_EQ(r.getBDF().device, 0);
    EXPECT_EQ(r.getBDF().function, 1);
    EXPECT_EQ(r.getEnumId(), "e1");
    EXPECT_EQ(r.getComponentType(), "FRMW");
    EXPECT_EQ(r.getVersion(), "16.5.0");
    EXPECT_EQ(r.getDisplay(), "X550 firmware");
    EXPECT_EQ(r.getFQDDInfo(), "");
}

TEST(DeviceElement, NonPciDeviceCarriesNameAndFQDD) {
    Records out;
    Populate(Inventory(NonPciDevice("159", "2.1.7", "BIOS.Setup.1-1", "BIOS", "BIOS")), out);
    ASSERT_EQ(out.size(), 1u);
    const CDeviceInfo& r = out[0];
    EXPECT_EQ(r.getDeviceType(), 2);
    EXPECT_EQ(r.getComponentID(), "159");
    EXPECT_EQ(r.getDeviceName(), "BIOS");
    EXPECT_EQ(r.getFQDDInfo(), "BIOS.Setup.1-1");
    EXPECT_EQ(r.getEnumId(), "e2");
    EXPECT_EQ(r.getComponentType(), "BIOS");
    EXPECT_EQ(r.getVersion(), "2.1.7");
    EXPECT_EQ(r.getStatus(), 0);
}

TEST(DeviceElement, EmptyVendorIDMeansNonPci) {
    Records out;
    Populate(
        Inventory("<Device vendorID=\"\" componentID=\"7\" bus=\"3b\"><Application componentType=\"DRVR\" "
                  "version=\"1\"/></Device>"),
        out);
    ASSERT_EQ(out.size(), 1u);
    EXPECT_EQ(out[0].getDeviceType(), 2);
    EXPECT_EQ(out[0].getBDF().bus, 0);
}

struct HexCase {
    const char* text;
    unsigned char value;
};

class HexReadingTest : public ::testing::TestWithParam<HexCase> {};

TEST_P(HexReadingTest, BusDeviceFunctionAreBase16) {
    EXPECT_EQ(QVRXMLInventoryData::ReadHexByte(GetParam().text), GetParam().value) << GetParam().text;
}

INSTANTIATE_TEST_SUITE_P(Cases, HexReadingTest,
                         ::testing::Values(HexCase{"3b", 0x3b}, HexCase{"3B", 0x3b}, HexCase{"0x1f", 0x1f},
                                           HexCase{"10", 0x10}, HexCase{"", 0}, HexCase{"zz", 0},
                                           HexCase{"g1", 0}, HexCase{"1g", 1}, HexCase{" 7", 7},
                                           HexCase{"1ff", 0xff}, HexCase{"99999999999999999999999", 0xff}));

TEST(DeviceElement, NonHexAddressReadsZero) {
    Records out;
    Populate(Inventory("<Device vendorID=\"8086\" bus=\"xy\" device=\"-\" function=\"f\"><Application "
                       "componentType=\"FRMW\" version=\"1\"/></Device>"),
             out);
    ASSERT_EQ(out.size(), 1u);
    EXPECT_EQ(out[0].getBDF().bus, 0);
    EXPECT_EQ(out[0].getBDF().device, 0);
    EXPECT_EQ(out[0].getBDF().function, 0xf);
}

TEST(DeviceElement, DeviceWithoutApplicationIsNotRecorded) {
    Records out;
    EXPECT_FALSE(Populate(Inventory("<Device vendorID=\"8086\" componentID=\"1\"/>"
                                    "<Device componentID=\"2\"><Other/></Device>"),
                          out));
    EXPECT_EQ(out.size(), 0u);
}

TEST(DeviceElement, LastAcceptedApplicationWins) {
    Records out;
    Populate(Inventory(
                 "<Device componentID=\"5\"><Application componentType=\"FRMW\" version=\"1\" display=\"a\"/>"
                 "<Application componentType=\"DRVR\" version=\"2\" display=\"b\"/>"
                 "<Application componentType=\"BIOS\" version=\"3\" display=\"c\"/></Device>"),
             out);
    ASSERT_EQ(out.size(), 1u);
    EXPECT_EQ(out[0].getComponentType(), "DRVR");
    EXPECT_EQ(out[0].getVersion(), "2");
    EXPECT_EQ(out[0].getDisplay(), "b");
}

TEST(DeviceElement, BiosApplicationOnlyOnComponent159) {
    Records out;
    Populate(Inventory(NonPciDevice("158", "1.0", "F", "BIOS") + NonPciDevice("159", "1.0", "F", "BIOS") +
                       PciDevice("158", "1.0", "BIOS") + PciDevice("159", "2.0", "BIOS")),
             out);
    ASSERT_EQ(out.size(), 2u);
    EXPECT_EQ(out[0].getComponentID(), "159");
    EXPECT_EQ(out[0].getDeviceType(), 2);
    EXPECT_EQ(out[1].getComponentID(), "159");
    EXPECT_EQ(out[1].getDeviceType(), 1);
}

TEST(DeviceElement, MissingAttributesReadEmpty) {
    Records out;
    Populate(Inventory("<Device><Application/></Device>"), out);
    ASSERT_EQ(out.size(), 1u);
    EXPECT_EQ(out[0].getComponentID(), "");
    EXPECT_EQ(out[0].getComponentType(), "");
    EXPECT_EQ(out[0].getVersion(), "");
    EXPECT_EQ(out[0].getStatus(), 0);
}

TEST(DeviceElement, AttributesWithMarkupCharactersAreKeptAsText) {
    Records out;
    Populate(
        Inventory("<Device componentID=\"&lt;1&gt;\" display=\"a &amp; &quot;b&quot; &apos;c&apos; "
                  "&lt;/Device&gt;\"><Application componentType=\"FRMW\" version=\"&lt;![CDATA[x]]&gt;\" "
                  "display=\"&#x3C;script&#x3E;\"/></Device>"),
        out);
    ASSERT_EQ(out.size(), 1u);
    EXPECT_EQ(out[0].getComponentID(), "<1>");
    EXPECT_EQ(out[0].getDeviceName(), "a & \"b\" 'c' </Device>");
    EXPECT_EQ(out[0].getVersion(), "<![CDATA[x]]>");
    EXPECT_EQ(out[0].getDisplay(), "<script>");
}

TEST(DeviceElement, NestedDevicesAreNotChildrenOfTheRoot) {
    Records out;
    Populate(Inventory("<Group>" + PciDevice("1", "1") + "</Group>"), out);
    EXPECT_EQ(out.size(), 0u);
}

TEST(DeviceElement, NamespacedRootAndChildrenCountByLocalName) {
    Records out;
    Populate(
        "<x:SVMInventory xmlns:x=\"urn:x\"><x:Device componentID=\"1\"><x:Application "
        "componentType=\"FRMW\" version=\"1\"/></x:Device></x:SVMInventory>",
        out);
    EXPECT_EQ(out.size(), 1u);
}

// ---- Other elements ------------------------------------------------------

TEST(OperatingSystemElement, TwoElementsGiveTwoRecordsEachWithBothEntries) {
    Records out;
    Populate(Inventory(OperatingSystem("Debian", "12") + PciDevice("1", "1") + OperatingSystem("Linux", "6")),
             out);
    ASSERT_EQ(out.size(), 3u);
    for (size_t i : {size_t(0), size_t(2)}) {
        const CDeviceInfo& os = out[i];
        EXPECT_EQ(os.getDisplay(), "OperatingSystem");
        EXPECT_EQ(os.getComponentID(), "001");
        EXPECT_EQ(os.getStatus(), -1);
        ASSERT_EQ(os.getDependencyOS().size(), 2u);
        EXPECT_EQ(os.getDependencyOS()[0].name, "Debian");
        EXPECT_EQ(os.getDependencyOS()[1].name, "Linux");
    }
    const SOSInfo& entry = out[0].getDependencyOS()[0];
    EXPECT_EQ(entry.osVendor, "Debian");
    EXPECT_EQ(entry.osArch, "x64");
    EXPECT_EQ(entry.majorVersion, "12");
    EXPECT_EQ(entry.minorVersion, "0");
    EXPECT_EQ(entry.spMajorVersion, "0");
    EXPECT_EQ(entry.spMinorVersion, "0");
    EXPECT_EQ(entry.buildNumber, "1");
    EXPECT_EQ(entry.osCode, "LIN");
}

TEST(OperatingSystemElement, WholeDocumentFormCollectsEveryEntryOfTheRoot) {
    QVRXMLParser parser(Inventory(OperatingSystem("A", "1") + OperatingSystem("B", "2")));
    QVRXMLInventoryData data("mod", "", nullptr);
    CDeviceInfo record;
    EXPECT_TRUE(data.ParseOperatingSystemNode(parser.GetRootNode(), &record));
    EXPECT_EQ(record.getDisplay(), "OperatingSystem");
    EXPECT_EQ(record.getComponentID(), "001");
    ASSERT_EQ(record.getDependencyOS().size(), 2u);
    EXPECT_EQ(record.getDependencyOS()[1].name, "B");
}

TEST(OperatingSystemElement, ManyElementsShareOneListInsteadOfGrowingQuadratically) {
    const size_t kCount = 20000;
    std::string body;
    for (size_t i = 0; i < kCount; ++i) body += OperatingSystem("os" + std::to_string(i), "1");
    Records out;
    Populate(Inventory(body), out);
    ASSERT_EQ(out.size(), kCount);
    EXPECT_EQ(out[kCount - 1].getDependencyOS().size(), kCount);
    EXPECT_EQ(&out[0].getDependencyOS(), &out[kCount - 1].getDependencyOS());
}

TEST(SystemElement, SystemIDGivesTheSystemRecord) {
    Records out;
    EXPECT_TRUE(Populate(Inventory("<System systemID=\"0A1B\"/>"), out));
    ASSERT_EQ(out.size(), 1u);
    EXPECT_EQ(out[0].getDisplay(), "SystemInventory");
    EXPECT_EQ(out[0].getComponentID(), "002");
    EXPECT_EQ(out[0].getSystemInfo().getSystemID(), "0A1B");
}

TEST(SystemElement, EmptySystemIDGivesNothing) {
    Records out;
    EXPECT_FALSE(Populate(Inventory("<System systemID=\"\"/><System/>"), out));
    EXPECT_EQ(out.size(), 0u);
}

TEST(SPStatusElement, ResultFalseGivesAFailureRecordWithTheLastMessage) {
    Records out;
    EXPECT_TRUE(Populate(Inventory("<SPStatus result=\"false\"><Message>first</Message>"
                                   "<Message>disk &amp; controller <b>not</b> found</Message></SPStatus>"),
                         out));
    ASSERT_EQ(out.size(), 1u);
    EXPECT_EQ(out[0].getDisplay(), "mod");
    EXPECT_EQ(out[0].getStatus(), 1);
    EXPECT_EQ(out[0].getErrorMsg(), "disk & controller  found");
}

TEST(SPStatusElement, WithoutMessageTheTextIsEmpty) {
    Records out;
    Populate(Inventory("<SPStatus result=\"false\"/>"), out);
    ASSERT_EQ(out.size(), 1u);
    EXPECT_EQ(out[0].getErrorMsg(), "");
}

TEST(SPStatusElement, AnyOtherResultGivesNothing) {
    Records out;
    EXPECT_FALSE(Populate(Inventory("<SPStatus result=\"true\"><Message>m</Message></SPStatus>"
                                    "<SPStatus result=\"False\"/><SPStatus/>"),
                          out));
    EXPECT_EQ(out.size(), 0u);
}

// ---- Whole documents ---------------------------------------------------------

TEST(Document, RootWithOnlyUnknownChildrenGivesNoRecordAndTrue) {
    Records out;
    EXPECT_TRUE(Populate(Inventory("<Unknown/><Other a=\"1\"/>"), out));
    EXPECT_TRUE(Populate("<SVMInventory/>", out));
    EXPECT_EQ(out.size(), 0u);
}

TEST(Document, AnotherRootGivesNoRecordAndFalse) {
    Records out;
    EXPECT_FALSE(
        Populate("<Inventory><Device componentID=\"1\"><Application componentType=\"FRMW\"/></Device>"
                 "</Inventory><!-- <SVMInventory -->",
                 out));
    EXPECT_EQ(out.size(), 0u);
}

TEST(Document, ResultIsThatOfTheLastChildOfTheRoot) {
    const std::string device = "<Device componentID=\"1\"><Application componentType=\"FRMW\"/></Device>";
    Records out;
    EXPECT_TRUE(Populate("<SVMInventory><Unknown/>" + device + "</SVMInventory>", out));
    EXPECT_FALSE(Populate("<SVMInventory>" + device + "<Unknown/></SVMInventory>", out));
    // Text between elements is a child of the root too (as in the whole-document form).
    EXPECT_FALSE(Populate("<SVMInventory>" + device + "\n</SVMInventory>", out));
    EXPECT_FALSE(Populate("<SVMInventory>" + device + "<!-- end --></SVMInventory>", out));
    EXPECT_TRUE(Populate("<SVMInventory><Unknown/><System systemID=\"1\"/></SVMInventory>", out));
    EXPECT_EQ(out.size(), 5u);
}

TEST(Document, RecordsKeepDocumentOrder) {
    Records out;
    Populate(Inventory(PciDevice("1", "1") + "<System systemID=\"S\"/>" + OperatingSystem("A", "1") +
                       "<SPStatus result=\"false\"/>" + NonPciDevice("2", "1", "F")),
             out);
    ASSERT_EQ(out.size(), 5u);
    EXPECT_EQ(out[0].getComponentID(), "1");
    EXPECT_EQ(out[1].getDisplay(), "SystemInventory");
    EXPECT_EQ(out[2].getDisplay(), "OperatingSystem");
    EXPECT_EQ(out[3].getStatus(), 1);
    EXPECT_EQ(out[4].getComponentID(), "2");
}

TEST(Document, RecordsAreAppendedAfterWhatOutHolds) {
    Records out;
    out.items.push_back(new CDeviceInfo());
    Populate(Inventory(PciDevice("1", "1")), out);
    ASSERT_EQ(out.size(), 2u);
    EXPECT_EQ(out[1].getComponentID(), "1");
}

TEST(Document, SecondPopulateAddsNothing) {
    QVRXMLInventoryData data("mod", "<SVMInventory><System systemID=\"1\"/></SVMInventory>", nullptr);
    Records out;
    EXPECT_TRUE(data.PopulateData(out.items));
    EXPECT_EQ(out.size(), 1u);
    EXPECT_FALSE(data.PopulateData(out.items));
    EXPECT_EQ(out.size(), 1u);
    EXPECT_EQ(data.GetModuleName(), "mod");
}

TEST(Document, CheckEmptyInvenetoryLooksForKnownChildren) {
    QVRXMLParser empty(Inventory("<Unknown/>"));
    EXPECT_TRUE(QVRXMLInventoryData::CheckEmptyInvenetory(empty.GetRootNode()));
    QVRXMLParser full(Inventory("<Unknown/><System/>"));
    EXPECT_FALSE(QVRXMLInventoryData::CheckEmptyInvenetory(full.GetRootNode()));
}

// ---- Failure records -------------------------------------------------------

TEST(FailureRecords, EmptyOutputIsAnExecutionFailure) {
    Records out;
    EXPECT_FALSE(Populate("", out));
    ASSERT_EQ(out.size(), 1u);
    EXPECT_EQ(out[0].getDisplay(), "mod");
    EXPECT_EQ(out[0].getStatus(), 1);
    EXPECT_EQ(out[0].getErrorMsg(), "Configured program execution failure");
}

TEST(FailureRecords, TruncatedDocumentIsAnInvalidDocument) {
    const std::string whole =
        Inventory(PciDevice("1", "1") + PciDevice("2", "1") + "<System systemID=\"1\"/>");
    for (size_t cut = 14; cut + 2 < whole.size(); cut += 5) {
        Records out;
        EXPECT_FALSE(Populate(whole.substr(0, cut), out));
        ASSERT_EQ(out.size(), 1u) << "cut at " << cut;
        EXPECT_EQ(out[0].getErrorMsg(), "Invalid inventory XML root element.");
        EXPECT_EQ(out[0].getStatus(), 1);
        EXPECT_EQ(out[0].getDisplay(), "mod");
    }
}

TEST(FailureRecords, LateErrorDiscardsEverythingParsedBefore) {
    Records out;
    Populate(ManyDevices(1000, 0) + "<junk>", out);
    ASSERT_EQ(out.size(), 1u);
    EXPECT_EQ(out[0].getErrorMsg(), "Invalid inventory XML root element.");
}

TEST(FailureRecords, PopulateEmptyInvDataAddsOneFailureAndAnswersFalse) {
    QVRXMLInventoryData data("identity", "x", nullptr);
    Records out;
    EXPECT_FALSE(data.PopulateEmptyInvData(out.items, "message"));
    ASSERT_EQ(out.size(), 1u);
    EXPECT_EQ(out[0].getDisplay(), "identity");
    EXPECT_EQ(out[0].getErrorMsg(), "message");
    EXPECT_EQ(out[0].getStatus(), 1);
}

// ---- The factory -----------------------------------------------------------

TEST(InventoryDataFactory, PlainTextWithoutTheRootTagIsDropped) {
    QVRInventoryDataFactory factory;
    std::string identity = "mod";
    std::string text = "Segmentation fault\n";
    EXPECT_EQ(factory(identity, text, nullptr), nullptr);
    std::string otherRoot = "<Inventory/>";
    EXPECT_EQ(factory(identity, otherRoot, nullptr), nullptr);
}

TEST(InventoryDataFactory, EmptyOutputAndOutputWithTheTagAreKept) {
    QVRInventoryDataFactory factory;
    std::string identity = "mod";
    std::string empty;
    std::unique_ptr<IQVRInventoryRawData> a(factory(identity, empty, nullptr));
    ASSERT_NE(a, nullptr);
    EXPECT_EQ(a->GetModuleName(), "mod");
    // The tag anywhere counts, even where it makes no document.
    std::string broken = "garbage <SVMInventory";
    std::unique_ptr<IQVRInventoryRawData> b(factory(identity, broken, nullptr));
    ASSERT_NE(b, nullptr);
    Records out;
    EXPECT_FALSE(b->PopulateData(out.items));
    ASSERT_EQ(out.size(), 1u);
    EXPECT_EQ(out[0].getErrorMsg(), "Invalid inventory XML root element.");
}

// ---- The filter applied while parsing ----------------------------------------

TEST(ParsingWithFilter, FilteredDevicesNeverBecomeRecordsButOthersPass) {
    QVRArgumentList args;
    args.insertValue(QVR_OPT_COMPID, "159");
    args.insertValue(QVR_OPT_COMPTYPE, "FRMW");
    QVRDataModelFilter filter(true);
    filter.Initialize(&args);
    Records out;
    Populate(Inventory(NonPciDevice("159", "1", "F", "FRMW") + NonPciDevice("159", "1", "F", "BIOS") +
                       PciDevice("158", "1", "FRMW") + PciDevice("159", "2", "FRMW") +
                       "<System systemID=\"S\"/><SPStatus result=\"false\"/>" + OperatingSystem("A", "1")),
             out, &filter);
    ASSERT_EQ(out.size(), 5u);
    EXPECT_EQ(out[0].getDeviceType(), 2);
    EXPECT_EQ(out[1].getDeviceType(), 1);
    EXPECT_EQ(out[1].getVersion(), "2");
    EXPECT_EQ(out[2].getDisplay(), "SystemInventory");
    EXPECT_EQ(out[3].getStatus(), 1);
    EXPECT_EQ(out[4].getDisplay(), "OperatingSystem");
}

}  // namespace

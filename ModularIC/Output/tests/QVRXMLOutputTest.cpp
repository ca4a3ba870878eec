// The XML inventory and error documents, written through the outputter
// manager as the controller does, compared byte for byte.
#include <gtest/gtest.h>

#include "OutputTestSupport.h"
#include "QVRDataModel.h"
#include "QVROptionKeys.h"
#include "QVROutputterManager.h"
#include "QVRXMLFactory.h"
#include "QVRXMLOuputContent.h"
#include "QVRXMLOutputStream.h"
#include "QVRXMLWriter.h"

using namespace outtest;

namespace {

std::string Declaration(const std::string& encoding) {
    return "<?xml version=\"1.0\" encoding=\"" + encoding + "\"?>\n";
}

const std::string kRootAttributes =
    "lang=\"en\" schemaVersion=\"1.0\" timestamp=\"2016-03-01 10:22:05\" "
    "sorvikVersion=\"21.09.200 (BLD_1155)\" sorvikBuild=\"1155\"";

const std::string kOperatingSystem =
    "  <OperatingSystem osVendor=\"VENDOR\" osCode=\"RHEL7\" osArch=\"x64\" majorVersion=\"7\" minorVersion=\"2\"/>\n";

const std::string kPciDevice =
    "  <Device display=\"PCI-NAME\" componentID=\"COMPID\" function=\"0\" device=\"0\" bus=\"3b\" "
    "subVendorID=\"SVID\" subDeviceID=\"SDID\" deviceID=\"DID\" vendorID=\"VID\">\n"
    "    <Application display=\"DISPLAY\" version=\"16.5.0\" componentType=\"FRMW\"/>\n"
    "  </Device>\n";

const std::string kNonPciDevice =
    "  <Device display=\"DEVICE-NAME\" componentID=\"159\" enum=\"1\" FQDD=\"FQDD-STRING\">\n"
    "    <Application display=\"BIOS DISPLAY\" version=\"2.1.7\" componentType=\"BIOS\"/>\n"
    "  </Device>\n";

std::string Inventory(const std::string& encoding, const std::string& body) {
    if (body.empty()) return Declaration(encoding) + "<SVMInventory " + kRootAttributes + "/>\n";
    return Declaration(encoding) + "<SVMInventory " + kRootAttributes + ">\n" + body + "</SVMInventory>\n";
}

const std::string kTwoErrors =
    "<InventoryError lang=\"en\">\n"
    "  <SPStatus module=\"DISPLAY-1\" result=\"false\">\n"
    "    <Message>module crashed &amp; burned</Message>\n"
    "  </SPStatus>\n"
    "  <SPStatus module=\"DISPLAY-2\" result=\"false\">\n"
    "    <Message>Empty inventory results.</Message>\n"
    "  </SPStatus>\n"
    "</InventoryError>\n";

class XMLOutput : public ::testing::Test {
protected:
    void TearDown() override {
        if (QVROutputterManager* manager = QVROutputterManager::GetInstance()) manager->Release();
    }

    // Writes the model to out.xml in UTF-8 and returns the file.
    std::string WriteToFile(QVRDataModel& model) {
        args.insertValue(QVR_OPT_OUT, dir.Path("out.xml"));
        args.insertValue(QVR_OPT_ENCODE, "UTF-8");
        EXPECT_TRUE(QVROutputterManager::GetInstance()->Write(&args, &model));
        return ReadFile(dir.Path("out.xml"));
    }

    FixedClock clock;
    TempDir dir;
    QVRArgumentList args;
};

}  // namespace

TEST_F(XMLOutput, FullInventoryDocument) {
    QVRDataModel model;
    AddOperatingSystem(model, false);
    AddSystem(model, "0627");
    model.Add(MakePCIDevice("PCI-NAME", "COMPID", "", 0x3b, 0, 0));
    model.Add(MakeNonPCIDevice("DEVICE-NAME", "159", "1", "FQDD-STRING"));
    EXPECT_EQ(WriteToFile(model), Inventory("UTF-8", kOperatingSystem + "  <System systemID=\"0627\"/>\n" +
                                                         kPciDevice + kNonPciDevice));
}

TEST_F(XMLOutput, OptionalOperatingSystemAttributesFollowInOrder) {
    QVRDataModel model;
    AddOperatingSystem(model, true);
    EXPECT_EQ(WriteToFile(model),
              Inventory("UTF-8",
                        "  <OperatingSystem osVendor=\"VENDOR\" osCode=\"RHEL7\" osArch=\"x64\" majorVersion=\"7\" "
                        "minorVersion=\"2\" spMajorVersion=\"1\" spMinorVersion=\"0\" buildNumber=\"1234\"/>\n"));
}

TEST_F(XMLOutput, EmptyModelGivesBareRoot) {
    QVRDataModel model;
    EXPECT_EQ(WriteToFile(model), Inventory("UTF-8", ""));
}

TEST_F(XMLOutput, EmptyDeviceListGivesOnlyOperatingSystemAndSystem) {
    QVRDataModel model;
    AddOperatingSystem(model, false);
    AddSystem(model, "0627");
    EXPECT_EQ(WriteToFile(model), Inventory("UTF-8", kOperatingSystem + "  <System systemID=\"0627\"/>\n"));
}

TEST_F(XMLOutput, PciAddressIsLowerCaseHexWithoutPadding) {
    QVRDataModel model;
    model.Add(MakePCIDevice("P", "", "", 0xAF, 0x1f, 7));
    EXPECT_EQ(WriteToFile(model),
              Inventory("UTF-8",
                        "  <Device display=\"P\" function=\"7\" device=\"1f\" bus=\"af\" subVendorID=\"SVID\" "
                        "subDeviceID=\"SDID\" deviceID=\"DID\" vendorID=\"VID\">\n"
                        "    <Application display=\"DISPLAY\" version=\"16.5.0\" componentType=\"FRMW\"/>\n"
                        "  </Device>\n"));
}

TEST_F(XMLOutput, PciEnumPrecedesComponentID) {
    QVRDataModel model;
    model.Add(MakePCIDevice("P", "C", "3", 1, 2, 3));
    EXPECT_EQ(WriteToFile(model),
              Inventory("UTF-8",
                        "  <Device display=\"P\" enum=\"3\" componentID=\"C\" function=\"3\" device=\"2\" bus=\"1\" "
                        "subVendorID=\"SVID\" subDeviceID=\"SDID\" deviceID=\"DID\" vendorID=\"VID\">\n"
                        "    <Application display=\"DISPLAY\" version=\"16.5.0\" componentType=\"FRMW\"/>\n"
                        "  </Device>\n"));
}

TEST_F(XMLOutput, NonPciAlwaysHasComponentIDAndEmptyApplicationValues) {
    QVRDataModel model;
    CDeviceInfo* device = MakeNonPCIDevice("N", "", "", "");
    device->setDisplay("");
    device->setVersion("");
    device->setComponentType("");
    model.Add(device);
    EXPECT_EQ(WriteToFile(model), Inventory("UTF-8",
                                            "  <Device display=\"N\" componentID=\"\">\n"
                                            "    <Application display=\"\" version=\"\" componentType=\"\"/>\n"
                                            "  </Device>\n"));
}

TEST_F(XMLOutput, NonPciFqddWithoutEnum) {
    QVRDataModel model;
    model.Add(MakeNonPCIDevice("N", "7", "", "F.Q.D.D"));
    EXPECT_EQ(WriteToFile(model),
              Inventory("UTF-8",
                        "  <Device display=\"N\" componentID=\"7\" FQDD=\"F.Q.D.D\">\n"
                        "    <Application display=\"BIOS DISPLAY\" version=\"2.1.7\" componentType=\"BIOS\"/>\n"
                        "  </Device>\n"));
}

TEST_F(XMLOutput, OtherDeviceTypesAreSkipped) {
    QVRDataModel model;
    CDeviceInfo* unknown = MakeNonPCIDevice("SKIPPED", "1", "", "");
    unknown->setDeviceType(0);
    model.Add(unknown);
    CDeviceInfo* other = MakeNonPCIDevice("SKIPPED-TOO", "1", "", "");
    other->setDeviceType(5);
    model.Add(other);
    model.Add(MakeNonPCIDevice("DEVICE-NAME", "159", "1", "FQDD-STRING"));
    EXPECT_EQ(WriteToFile(model), Inventory("UTF-8", kNonPciDevice));
}

TEST_F(XMLOutput, FileWithoutEncodingOptionIsUtf16) {
    QVRDataModel model;
    AddOperatingSystem(model, false);
    args.insertValue(QVR_OPT_OUT, dir.Path("out.xml"));
    ASSERT_TRUE(QVROutputterManager::GetInstance()->Write(&args, &model));
    const std::string bytes = ReadFile(dir.Path("out.xml"));
    ASSERT_GE(bytes.size(), 2u);
    EXPECT_EQ(bytes.substr(0, 2), "\xFF\xFE");
    EXPECT_EQ(bytes, Utf16LeWithBom(Inventory("UTF-16", kOperatingSystem)));
}

TEST_F(XMLOutput, FileTakesEncodingOption) {
    QVRDataModel model;
    args.insertValue(QVR_OPT_OUT, dir.Path("out.xml"));
    args.insertValue(QVR_OPT_ENCODE, "UTF-16");
    ASSERT_TRUE(QVROutputterManager::GetInstance()->Write(&args, &model));
    EXPECT_EQ(ReadFile(dir.Path("out.xml")), Utf16LeWithBom(Inventory("UTF-16", "")));
}

TEST_F(XMLOutput, StandardOutputIsUtf8WhateverTheEncodingOption) {
    QVRDataModel model;
    AddSystem(model, "0627");
    args.insertValue(QVR_OPT_ENCODE, "UTF-16");
    StdoutCapture capture;
    const bool written = QVROutputterManager::GetInstance()->Write(&args, &model);
    const std::string out = capture.Finish();
    EXPECT_TRUE(written);
    EXPECT_EQ(out, Inventory("UTF-8", "  <System systemID=\"0627\"/>\n"));
}

TEST_F(XMLOutput, ErrorDocumentFollowsInventoryOnStandardOutput) {
    QVRDataModel model;
    model.Add(MakeError("DISPLAY-1", "module crashed & burned"));
    model.Add(MakeError("DISPLAY-2", ""));
    StdoutCapture capture;
    QVROutputterManager::GetInstance()->Write(&args, &model);
    const std::string out = capture.Finish();
    EXPECT_EQ(out, Inventory("UTF-8", "") + Declaration("UTF-8") + kTwoErrors);
}

TEST_F(XMLOutput, ErrorDocumentGoesToLogFile) {
    QVRDataModel model;
    model.Add(MakeError("DISPLAY-1", "module crashed & burned"));
    model.Add(MakeError("DISPLAY-2", ""));
    args.insertValue(QVR_OPT_LOG, dir.Path("err.xml"));
    args.insertValue(QVR_OPT_ENCODE, "UTF-8");
    StdoutCapture capture;
    QVROutputterManager::GetInstance()->Write(&args, &model);
    const std::string out = capture.Finish();
    EXPECT_EQ(out, Inventory("UTF-8", ""));
    EXPECT_EQ(ReadFile(dir.Path("err.xml")), Declaration("UTF-8") + kTwoErrors);
}

TEST_F(XMLOutput, ErrorFileWithoutEncodingOptionIsUtf16) {
    QVRDataModel model;
    model.Add(MakeError("DISPLAY-1", "module crashed & burned"));
    model.Add(MakeError("DISPLAY-2", ""));
    args.insertValue(QVR_OPT_LOG, dir.Path("err.xml"));
    args.insertValue(QVR_OPT_OUT, dir.Path("out.xml"));
    ASSERT_TRUE(QVROutputterManager::GetInstance()->Write(&args, &model));
    EXPECT_EQ(ReadFile(dir.Path("err.xml")), Utf16LeWithBom(Declaration("UTF-16") + kTwoErrors));
    EXPECT_EQ(ReadFile(dir.Path("out.xml")), Utf16LeWithBom(Inventory("UTF-16", "")));
}

TEST_F(XMLOutput, NoErrorsNoErrorDocumentEvenWithLogFile) {
    QVRDataModel model;
    model.Add(MakeNonPCIDevice("DEVICE-NAME", "159", "1", "FQDD-STRING"));
    args.insertValue(QVR_OPT_LOG, dir.Path("err.xml"));
    EXPECT_EQ(WriteToFile(model), Inventory("UTF-8", kNonPciDevice));
    EXPECT_FALSE(FileExists(dir.Path("err.xml")));
}

TEST_F(XMLOutput, NoErrorsNothingAfterInventoryOnStandardOutput) {
    QVRDataModel model;
    StdoutCapture capture;
    QVROutputterManager::GetInstance()->Write(&args, &model);
    EXPECT_EQ(capture.Finish(), Inventory("UTF-8", ""));
}

TEST_F(XMLOutput, ExistingOutputFileIsReplaced) {
    QVRDataModel model;
    WriteFile(dir.Path("out.xml"), std::string(10000, 'x'));
    EXPECT_EQ(WriteToFile(model), Inventory("UTF-8", ""));
}

TEST_F(XMLOutput, MarkupInValuesIsEscaped) {
    QVRDataModel model;
    model.Add(MakeNonPCIDevice("A & <B>", "\"1\"", "", ""));
    EXPECT_EQ(WriteToFile(model),
              Inventory("UTF-8",
                        "  <Device display=\"A &amp; &lt;B&gt;\" componentID=\"&quot;1&quot;\">\n"
                        "    <Application display=\"BIOS DISPLAY\" version=\"2.1.7\" componentType=\"BIOS\"/>\n"
                        "  </Device>\n"));
}

TEST_F(XMLOutput, CollectorInformationComesFromTheDataModel) {
    QVRDataModel model;
    CDeviceInfo collector;
    collector.setDisplay("Inventory Collector");
    collector.setVersion("22.01.100 (BLD_77)");
    model.AddInventoryCollectorInfo(&collector);
    EXPECT_EQ(WriteToFile(model), Declaration("UTF-8") +
                                      "<SVMInventory lang=\"en\" schemaVersion=\"1.0\" timestamp=\"2016-03-01 10:22:05\" "
                                      "sorvikVersion=\"22.01.100 (BLD_77)\" sorvikBuild=\"77\"/>\n");
}

TEST_F(XMLOutput, TimestampIsLocalTime) {
    setenv("TZ", "EST5", 1);  // FixedClock restores the zone afterwards
    tzset();
    QVRDataModel model;
    const std::string doc = WriteToFile(model);
    EXPECT_NE(doc.find("timestamp=\"2016-03-01 05:22:05\""), std::string::npos) << doc;
}

// The content writer and stream used without the manager.
TEST_F(XMLOutput, ContentWithoutBannerWritesNothing) {
    QVRDataModel model;
    model.Add(MakeError("M", ""));
    QVRXMLOutputStream stream(&args);
    QVRXMLOuputContent content(&model, &stream);
    EXPECT_FALSE(content.Write());
    EXPECT_FALSE(stream.IsErrorDocumentPresent());
}

TEST_F(XMLOutput, ErrorFlagSetOnlyWithErrors) {
    QVRDataModel model;
    QVRXMLOutputStream stream(&args);
    stream.GetDocumentWriter()->AddHeader("1.0");
    stream.GetDocumentWriter()->AddRootNode("SVMInventory");
    stream.GetErrorWriter()->AddHeader("1.0");
    stream.GetErrorWriter()->AddRootNode("InventoryError");
    QVRXMLOuputContent content(&model, &stream);
    EXPECT_TRUE(content.Write());
    EXPECT_FALSE(stream.IsErrorDocumentPresent());
    EXPECT_FALSE(content.WriteOperatingSystemInfo());
    EXPECT_FALSE(content.WriteSystemInfo());
    model.Add(MakeError("M", "text"));
    EXPECT_TRUE(content.WriteErrorDeviceInfo());
    EXPECT_TRUE(stream.IsErrorDocumentPresent());
}

TEST(XMLOutputStream, EncodingRule) {
    EXPECT_EQ(QVRXMLOutputStream::ChooseEncoding("", ""), "UTF-8");
    EXPECT_EQ(QVRXMLOutputStream::ChooseEncoding("", "UTF-16"), "UTF-8");
    EXPECT_EQ(QVRXMLOutputStream::ChooseEncoding("f.xml", ""), "UTF-16");
    EXPECT_EQ(QVRXMLOutputStream::ChooseEncoding("f.xml", "UTF-8"), "UTF-8");
    EXPECT_EQ(QVRXMLOutputStream::ChooseEncoding("f.xml", "UTF-16"), "UTF-16");
}

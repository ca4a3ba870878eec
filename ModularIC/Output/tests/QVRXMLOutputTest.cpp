// The XML inventory and error documents, written through the outputter
// manager as the controller does, compared byte for byte.
#include <gtest/gtest.h>

#include <functional>

#include "OutputTestSupport.h"
#include "QVROptionKeys.h"
#include "QVROutputterManager.h"

using namespace outtest;

namespace {

std::string Declaration(const std::string& encoding) {
    return "<?xml version=\"1.0\" encoding=\"" + encoding + "\"?>\n";
}

std::string Inventory(const std::string& encoding, const std::string& body) {
    const std::string root =
        "<SVMInventory lang=\"en\" schemaVersion=\"1.0\" timestamp=\"2016-03-01 10:22:05\" "
        "sorvikVersion=\"21.09.200 (BLD_1155)\" sorvikBuild=\"1155\"";
    return Declaration(encoding) + root + (body.empty() ? "/>\n" : ">\n" + body + "</SVMInventory>\n");
}

std::string Application(const std::string& display, const std::string& version, const std::string& type) {
    return "    <Application display=\"" + display + "\" version=\"" + version + "\" componentType=\"" +
           type + "\"/>\n  </Device>\n";
}

const std::string kOs =
    "  <OperatingSystem osVendor=\"VENDOR\" osCode=\"RHEL7\" osArch=\"x64\" majorVersion=\"7\" "
    "minorVersion=\"2\"";
const std::string kIds = "subVendorID=\"SVID\" subDeviceID=\"SDID\" deviceID=\"DID\" vendorID=\"VID\">\n";
const std::string kPciApp = Application("DISPLAY", "16.5.0", "FRMW");
const std::string kBios = Application("BIOS DISPLAY", "2.1.7", "BIOS");
const std::string kNonPci =
    "  <Device display=\"DEVICE-NAME\" componentID=\"159\" enum=\"1\" FQDD=\"FQDD-STRING\">\n" + kBios;
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
    void TearDown() override { QVROutputterManager::GetInstance()->Release(); }
    FixedClock clock;
    TempDir dir;
};

CDeviceInfo* WithType(CDeviceInfo* device, int type) {
    device->setDeviceType(type);
    return device;
}

TEST_F(XMLOutput, InventoryDocumentsByteForByte) {
    struct Row {
        const char* name;
        std::function<void(QVRDataModel&)> fill;
        std::string body;
    };
    const Row rows[] = {
        {"empty model", [](QVRDataModel&) {}, ""},
        {"full",
         [](QVRDataModel& m) {
             AddOperatingSystem(m, false);
             AddSystem(m, "0627");
             m.Add(MakePCIDevice("PCI-NAME", "COMPID", "", 0x3b, 0, 0));
             m.Add(MakeNonPCIDevice("DEVICE-NAME", "159", "1", "FQDD-STRING"));
         },
         kOs +
             "/>\n  <System systemID=\"0627\"/>\n  <Device display=\"PCI-NAME\" componentID=\"COMPID\" "
             "function=\"0\" "
             "device=\"0\" bus=\"3b\" " +
             kIds + kPciApp + kNonPci},
        {"optional operating system attributes", [](QVRDataModel& m) { AddOperatingSystem(m, true); },
         kOs + " spMajorVersion=\"1\" spMinorVersion=\"0\" buildNumber=\"1234\"/>\n"},
        {"unpadded lower-case hex, enum before componentID",
         [](QVRDataModel& m) { m.Add(MakePCIDevice("P", "C", "3", 0xAF, 0x1f, 7)); },
         "  <Device display=\"P\" enum=\"3\" componentID=\"C\" function=\"7\" device=\"1f\" bus=\"af\" " +
             kIds + kPciApp},
        {"non-PCI always has componentID, FQDD without enum",
         [](QVRDataModel& m) { m.Add(MakeNonPCIDevice("N", "", "", "F.Q.D.D")); },
         "  <Device display=\"N\" componentID=\"\" FQDD=\"F.Q.D.D\">\n" + kBios},
        {"other device types skipped",
         [](QVRDataModel& m) {
             m.Add(WithType(MakeNonPCIDevice("SKIPPED", "1", "", ""), 0));
             m.Add(WithType(MakeNonPCIDevice("SKIPPED", "1", "", ""), 5));
             m.Add(MakeNonPCIDevice("DEVICE-NAME", "159", "1", "FQDD-STRING"));
         },
         kNonPci},
        {"markup escaped", [](QVRDataModel& m) { m.Add(MakeNonPCIDevice("A & <B>", "\"1\"", "", "")); },
         "  <Device display=\"A &amp; &lt;B&gt;\" componentID=\"&quot;1&quot;\">\n" + kBios},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.name);
        QVRDataModel rowModel;
        row.fill(rowModel);
        QVRArgumentList rowArgs;
        rowArgs.insertValue(QVR_OPT_OUT, dir.Path("out.xml"));
        rowArgs.insertValue(QVR_OPT_ENCODE, "UTF-8");
        EXPECT_TRUE(QVROutputterManager::GetInstance()->Write(&rowArgs, &rowModel));
        EXPECT_EQ(Inventory("UTF-8", row.body), ReadFile(dir.Path("out.xml")));
        QVROutputterManager::GetInstance()->Release();
    }
}

// Standard output is always UTF-8; a file is UTF-16 with a byte-order mark unless
// an encoding is given; the error document follows the inventory or goes to the log file.
TEST_F(XMLOutput, WhereEachDocumentGoesAndInWhichEncoding) {
    const std::string utf8 = Inventory("UTF-8", kOs + "/>\n"),
                      utf16 = Utf16LeWithBom(Inventory("UTF-16", kOs + "/>\n"));
    const struct {
        const char *out, *log, *encoding;
        bool errors;
        std::string printed, outFile, logFile;
    } rows[] = {
        {"out.xml", "", nullptr, false, "", utf16, ""},
        {"", "", "UTF-16", false, utf8, "", ""},
        {"", "", "UTF-16", true, utf8 + Declaration("UTF-8") + kTwoErrors, "", ""},
        {"out.xml", "err.xml", nullptr, true, "", utf16, Utf16LeWithBom(Declaration("UTF-16") + kTwoErrors)},
        {"", "err.xml", "UTF-8", false, utf8, "", ""},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.printed + row.outFile + row.logFile);
        TempDir rowDir;
        QVRDataModel model;
        AddOperatingSystem(model, false);
        if (row.errors)
            model.Add(MakeError("DISPLAY-1", "module crashed & burned")),
                model.Add(MakeError("DISPLAY-2", ""));
        QVRArgumentList args;
        if (*row.out) args.insertValue(QVR_OPT_OUT, rowDir.Path(row.out));
        if (*row.log) args.insertValue(QVR_OPT_LOG, rowDir.Path(row.log));
        if (row.encoding) args.insertValue(QVR_OPT_ENCODE, row.encoding);
        EXPECT_EQ(row.printed, CaptureStdout([&] {
                      EXPECT_TRUE(QVROutputterManager::GetInstance()->Write(&args, &model));
                  }));
        EXPECT_EQ(row.outFile, ReadFile(rowDir.Path("out.xml")));
        EXPECT_EQ(row.logFile, ReadFile(rowDir.Path("err.xml")));
        EXPECT_EQ(FileExists(rowDir.Path("err.xml")), !row.logFile.empty());
        QVROutputterManager::GetInstance()->Release();
    }
}

}  // namespace

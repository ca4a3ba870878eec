// The JSON inventory document, written through the outputter manager,
// compared byte for byte.
#include <gtest/gtest.h>

#include "OutputTestSupport.h"
#include "QVRDataModel.h"
#include "QVRJSONOuputContent.h"
#include "QVRJSONOutputStream.h"
#include "QVRJSONWriter.h"
#include "QVROptionKeys.h"
#include "QVROutputterManager.h"

using namespace outtest;

namespace {

const std::string kOperatingSystem =
    "\t\t\"OperatingSystem\":\t{\n"
    "\t\t\t\"osVendor\":\t\"VENDOR\",\n"
    "\t\t\t\"osCode\":\t\"RHEL7\",\n"
    "\t\t\t\"osArch\":\t\"x64\",\n"
    "\t\t\t\"majorVersion\":\t\"7\",\n"
    "\t\t\t\"minorVersion\":\t\"2\"\n"
    "\t\t},\n";

const std::string kEmptyOperatingSystem = "\t\t\"OperatingSystem\":\t{\n\t\t},\n";
const std::string kEmptySystem = "\t\t\"System\":\t{\n\t\t},\n";
const std::string kSystem = "\t\t\"System\":\t{\n\t\t\t\"systemID\":\t\"0627\"\n\t\t},\n";

std::string Document(const std::string& os, const std::string& system, const std::string& components) {
    return "{\n\t\"UpdatableComponentsInventory\":\t{\n" + os + system + "\t\t\"UpdateableComponent\":\t[" + components +
           "]\n\t}\n}\n";
}

const std::string kPciObject =
    "{\n"
    "\t\t\t\t\"name\":\t\"DISPLAY\",\n"
    "\t\t\t\t\"componentType\":\t\"FRMW\",\n"
    "\t\t\t\t\"componentID\":\t\"COMPID\",\n"
    "\t\t\t\t\"componentInstance\":\t\"2\",\n"
    "\t\t\t\t\"vendorID\":\t\"VID\",\n"
    "\t\t\t\t\"deviceID\":\t\"DID\",\n"
    "\t\t\t\t\"subVendorID\":\t\"SVID\",\n"
    "\t\t\t\t\"subDeviceID\":\t\"SDID\",\n"
    "\t\t\t\t\"version\":\t\"16.5.0\"\n"
    "\t\t\t}";

const std::string kNonPciObject =
    "{\n"
    "\t\t\t\t\"name\":\t\"BIOS DISPLAY\",\n"
    "\t\t\t\t\"componentType\":\t\"BIOS\",\n"
    "\t\t\t\t\"componentID\":\t\"159\",\n"
    "\t\t\t\t\"version\":\t\"2.1.7\",\n"
    "\t\t\t\t\"componentInstance\":\t\"1\",\n"
    "\t\t\t\t\"fqdd\":\t\"FQDD-STRING\"\n"
    "\t\t\t}";

class JSONOutput : public ::testing::Test {
protected:
    void SetUp() override { args.insertValue(QVR_OPT_OUTPUTFORMAT, "json"); }
    void TearDown() override {
        if (QVROutputterManager* manager = QVROutputterManager::GetInstance()) manager->Release();
    }

    std::string WriteToFile(QVRDataModel& model) {
        args.insertValue(QVR_OPT_OUT, dir.Path("out.json"));
        EXPECT_TRUE(QVROutputterManager::GetInstance()->Write(&args, &model));
        return ReadFile(dir.Path("out.json"));
    }

    FixedClock clock;
    TempDir dir;
    QVRArgumentList args;
};

}  // namespace

TEST_F(JSONOutput, FullDocument) {
    QVRDataModel model;
    AddOperatingSystem(model, false);
    AddSystem(model, "0627");
    model.Add(MakePCIDevice("PCI-NAME", "COMPID", "2", 0x3b, 0, 0));
    model.Add(MakeNonPCIDevice("DEVICE-NAME", "159", "1", "FQDD-STRING"));
    EXPECT_EQ(WriteToFile(model), Document(kOperatingSystem, kSystem, kPciObject + ", " + kNonPciObject));
}

TEST_F(JSONOutput, EmptyModelHasEmptyObjectsAndArray) {
    QVRDataModel model;
    EXPECT_EQ(WriteToFile(model), Document(kEmptyOperatingSystem, kEmptySystem, ""));
}

TEST_F(JSONOutput, EmptySystemObjectWithoutSystemInformation) {
    QVRDataModel model;
    AddOperatingSystem(model, false);
    EXPECT_EQ(WriteToFile(model), Document(kOperatingSystem, kEmptySystem, ""));
}

TEST_F(JSONOutput, OperatingSystemOptionalMembersInOrder) {
    QVRDataModel model;
    AddOperatingSystem(model, true);
    EXPECT_EQ(WriteToFile(model), Document("\t\t\"OperatingSystem\":\t{\n"
                                           "\t\t\t\"name\":\t\"Linux\",\n"
                                           "\t\t\t\"osVendor\":\t\"VENDOR\",\n"
                                           "\t\t\t\"osCode\":\t\"RHEL7\",\n"
                                           "\t\t\t\"osArch\":\t\"x64\",\n"
                                           "\t\t\t\"majorVersion\":\t\"7\",\n"
                                           "\t\t\t\"minorVersion\":\t\"2\",\n"
                                           "\t\t\t\"spMajorVersion\":\t\"1\",\n"
                                           "\t\t\t\"spMinorVersion\":\t\"0\",\n"
                                           "\t\t\t\"buildNumber\":\t\"1234\"\n"
                                           "\t\t},\n",
                                           kEmptySystem, ""));
}

TEST_F(JSONOutput, PciWithoutOptionalMembers) {
    QVRDataModel model;
    model.Add(MakePCIDevice("PCI-NAME", "", "", 1, 2, 3));
    EXPECT_EQ(WriteToFile(model), Document(kEmptyOperatingSystem, kEmptySystem,
                                           "{\n"
                                           "\t\t\t\t\"name\":\t\"DISPLAY\",\n"
                                           "\t\t\t\t\"componentType\":\t\"FRMW\",\n"
                                           "\t\t\t\t\"vendorID\":\t\"VID\",\n"
                                           "\t\t\t\t\"deviceID\":\t\"DID\",\n"
                                           "\t\t\t\t\"subVendorID\":\t\"SVID\",\n"
                                           "\t\t\t\t\"subDeviceID\":\t\"SDID\",\n"
                                           "\t\t\t\t\"version\":\t\"16.5.0\"\n"
                                           "\t\t\t}"));
}

TEST_F(JSONOutput, FqddWithoutComponentInstance) {
    QVRDataModel model;
    model.Add(MakeNonPCIDevice("N", "", "", "F.Q.D.D"));
    EXPECT_EQ(WriteToFile(model), Document(kEmptyOperatingSystem, kEmptySystem,
                                           "{\n"
                                           "\t\t\t\t\"name\":\t\"BIOS DISPLAY\",\n"
                                           "\t\t\t\t\"componentType\":\t\"BIOS\",\n"
                                           "\t\t\t\t\"componentID\":\t\"\",\n"
                                           "\t\t\t\t\"version\":\t\"2.1.7\",\n"
                                           "\t\t\t\t\"fqdd\":\t\"F.Q.D.D\"\n"
                                           "\t\t\t}"));
}

TEST_F(JSONOutput, OtherDeviceTypesAndErrorsAreAbsent) {
    QVRDataModel model;
    CDeviceInfo* unknown = MakeNonPCIDevice("SKIPPED", "1", "", "");
    unknown->setDeviceType(0);
    model.Add(unknown);
    model.Add(MakeError("FAILED", "boom"));
    model.Add(MakeNonPCIDevice("DEVICE-NAME", "159", "1", "FQDD-STRING"));
    args.insertValue(QVR_OPT_LOG, dir.Path("err.xml"));
    EXPECT_EQ(WriteToFile(model), Document(kEmptyOperatingSystem, kEmptySystem, kNonPciObject));
    EXPECT_FALSE(FileExists(dir.Path("err.xml")));
}

TEST_F(JSONOutput, EncodingOptionIsIgnored) {
    QVRDataModel model;
    args.insertValue(QVR_OPT_ENCODE, "UTF-16");
    EXPECT_EQ(WriteToFile(model), Document(kEmptyOperatingSystem, kEmptySystem, ""));
}

TEST_F(JSONOutput, StandardOutputWhenNoOutputFile) {
    QVRDataModel model;
    AddSystem(model, "0627");
    model.Add(MakeError("FAILED", "boom"));
    StdoutCapture capture;
    const bool written = QVROutputterManager::GetInstance()->Write(&args, &model);
    const std::string out = capture.Finish();
    EXPECT_TRUE(written);
    EXPECT_EQ(out, Document(kEmptyOperatingSystem, kSystem, ""));
}

TEST_F(JSONOutput, ExistingFileIsReplaced) {
    QVRDataModel model;
    WriteFile(dir.Path("out.json"), std::string(5000, 'q'));
    EXPECT_EQ(WriteToFile(model), Document(kEmptyOperatingSystem, kEmptySystem, ""));
}

TEST_F(JSONOutput, ValuesAreEscapedJsonStrings) {
    QVRDataModel model;
    CDeviceInfo* device = MakeNonPCIDevice("N", "a\"b\\c", "", "");
    model.Add(device);
    const std::string doc = WriteToFile(model);
    EXPECT_NE(doc.find("\"componentID\":\t\"a\\\"b\\\\c\""), std::string::npos) << doc;
}

TEST_F(JSONOutput, HelpersWriteSystemAndDevicesUnderAGivenObject) {
    QVRDataModel model;
    model.Add(MakeNonPCIDevice("DEVICE-NAME", "159", "1", "FQDD-STRING"));
    args.insertValue(QVR_OPT_OUT, dir.Path("h.json"));
    QVRJSONOutputStream stream(&args);
    ASSERT_TRUE(stream.IsReady());
    QVRJSONOuputContent content(&model, &stream);
    cJSON* object = stream.GetWriter()->CreateObject();
    EXPECT_FALSE(content.WriteSystemInfo(object));
    EXPECT_FALSE(content.WriteOperatingSystemInfo(object));
    AddSystem(model, "0627");
    EXPECT_TRUE(content.WriteSystemInfo(object));
    EXPECT_TRUE(content.WriteDeviceInfo(object));
    EXPECT_TRUE(stream.GetWriter()->AddObjectToRoot(object, "x"));
    EXPECT_TRUE(stream.Write());
    EXPECT_EQ(ReadFile(dir.Path("h.json")),
              "{\n\t\"x\":\t{\n\t\t\"systemID\":\t\"0627\",\n\t\t\"UpdateableComponent\":\t[" + kNonPciObject +
                  "]\n\t}\n}\n");
}

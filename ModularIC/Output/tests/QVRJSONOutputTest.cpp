// The JSON inventory document, written through the outputter manager,
// compared byte for byte.
#include <gtest/gtest.h>

#include <functional>

#include "OutputTestSupport.h"
#include "QVROptionKeys.h"
#include "QVROutputterManager.h"

using namespace outtest;

namespace {

// One member line at the given depth of tabs.
std::string M(int depth, const std::string& key, const std::string& value, bool last = false) {
    return std::string(depth, '\t') + "\"" + key + "\":\t\"" + value + (last ? "\"\n" : "\",\n");
}

std::string Document(const std::string& os, const std::string& system, const std::string& components) {
    return "{\n\t\"UpdatableComponentsInventory\":\t{\n\t\t\"OperatingSystem\":\t{\n" + os + "\t\t},\n" +
           "\t\t\"System\":\t{\n" + system + "\t\t},\n\t\t\"UpdateableComponent\":\t[" + components +
           "]\n\t}\n}\n";
}

const std::string kOs = M(3, "osVendor", "VENDOR") + M(3, "osCode", "RHEL7") + M(3, "osArch", "x64") +
                        M(3, "majorVersion", "7") + M(3, "minorVersion", "2", true);
const std::string kSystem = M(3, "systemID", "0627", true);
const std::string kPciIds = M(4, "vendorID", "VID") + M(4, "deviceID", "DID") + M(4, "subVendorID", "SVID") +
                            M(4, "subDeviceID", "SDID") + M(4, "version", "16.5.0", true) + "\t\t\t}";
const std::string kPci = "{\n" + M(4, "name", "DISPLAY") + M(4, "componentType", "FRMW") +
                         M(4, "componentID", "COMPID") + M(4, "componentInstance", "2") + kPciIds;
const std::string kBios = "{\n" + M(4, "name", "BIOS DISPLAY") + M(4, "componentType", "BIOS");
const std::string kNonPci = kBios + M(4, "componentID", "159") + M(4, "version", "2.1.7") +
                            M(4, "componentInstance", "1") + M(4, "fqdd", "FQDD-STRING", true) + "\t\t\t}";

class JSONOutput : public ::testing::Test {
protected:
    void TearDown() override { QVROutputterManager::GetInstance()->Release(); }
    FixedClock clock;
    TempDir dir;
};

TEST_F(JSONOutput, DocumentsByteForByteInAFileAndOnStandardOutput) {
    struct Row {
        const char* name;
        std::function<void(QVRDataModel&)> fill;
        std::string expected;
    };
    const Row rows[] = {
        {"empty model: empty objects and array", [](QVRDataModel&) {}, Document("", "", "")},
        {"full",
         [](QVRDataModel& m) {
             AddOperatingSystem(m, false);
             AddSystem(m, "0627");
             m.Add(MakePCIDevice("PCI-NAME", "COMPID", "2", 0x3b, 0, 0));
             m.Add(MakeNonPCIDevice("DEVICE-NAME", "159", "1", "FQDD-STRING"));
         },
         Document(kOs, kSystem, kPci + ", " + kNonPci)},
        {"optional operating system members", [](QVRDataModel& m) { AddOperatingSystem(m, true); },
         Document(M(3, "name", "Linux") + kOs.substr(0, kOs.size() - 1) + ",\n" +
                      M(3, "spMajorVersion", "1") + M(3, "spMinorVersion", "0") +
                      M(3, "buildNumber", "1234", true),
                  "", "")},
        {"PCI without optional members", [](QVRDataModel& m) { m.Add(MakePCIDevice("P", "", "", 1, 2, 3)); },
         Document("", "", "{\n" + M(4, "name", "DISPLAY") + M(4, "componentType", "FRMW") + kPciIds)},
        {"other device types and errors absent",
         [](QVRDataModel& m) {
             CDeviceInfo* unknown = MakeNonPCIDevice("SKIPPED", "1", "", "");
             unknown->setDeviceType(0);
             m.Add(unknown);
             m.Add(MakeError("FAILED", "boom"));
             m.Add(MakeNonPCIDevice("DEVICE-NAME", "159", "1", "FQDD-STRING"));
         },
         Document("", "", kNonPci)},
        {"escaped strings, fqdd without componentInstance",
         [](QVRDataModel& m) { m.Add(MakeNonPCIDevice("N", "a\"b\\c", "", "F.Q.D.D")); },
         Document("", "",
                  kBios + M(4, "componentID", "a\\\"b\\\\c") + M(4, "version", "2.1.7") +
                      M(4, "fqdd", "F.Q.D.D", true) + "\t\t\t}")},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.name);
        for (const bool toFile : {true, false}) {
            QVRDataModel model;
            row.fill(model);
            QVRArgumentList args;
            args.insertValue(QVR_OPT_OUTPUTFORMAT, toFile ? "json" : "JSON");
            if (toFile) args.insertValue(QVR_OPT_OUT, dir.Path("out.json"));
            args.insertValue(QVR_OPT_ENCODE, "UTF-16");  // ignored
            args.insertValue(QVR_OPT_LOG, dir.Path("err.xml"));
            const std::string printed =
                CaptureStdout([&] { EXPECT_TRUE(QVROutputterManager::GetInstance()->Write(&args, &model)); });
            EXPECT_EQ(row.expected, toFile ? ReadFile(dir.Path("out.json")) : printed);
            EXPECT_FALSE(FileExists(dir.Path("err.xml")));
            QVROutputterManager::GetInstance()->Release();
        }
    }
}

}  // namespace

// Every document the collector writes, compared byte for byte with files kept
// under tests/golden. Those files were written by the writer that built whole
// libxml2 and cJSON trees and saved them; any writer must keep producing them.
// With SORVIK_UPDATE_GOLDEN set in the environment the test writes the files
// instead of comparing (review the diff before committing it).
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <fstream>
#include <functional>
#include <vector>

#include "CDeviceInfo.h"
#include "OutputTestSupport.h"
#include "QVRArgumentList.h"
#include "QVRDataModel.h"
#include "QVROptionKeys.h"
#include "QVROutputterManager.h"

using namespace outtest;

namespace {

CDeviceInfo* MakeNonPCIDevice(const std::string& name, const std::string& componentID,
                              const std::string& enumId, const std::string& fqdd) {
    CDeviceInfo* record = new CDeviceInfo();
    record->setStatus(QVR_STATUS_SUCCESS);
    record->setDeviceType(QVR_DEVICE_NONPCI);
    record->setDeviceName(name);
    record->setComponentID(componentID);
    record->setEnumId(enumId);
    record->setFQDDInfo(fqdd);
    record->setDisplay("BIOS DISPLAY");
    record->setVersion("2.1.7");
    record->setComponentType("BIOS");
    return record;
}

CDeviceInfo* MakePCIDevice(const std::string& display, const std::string& componentID,
                           const std::string& enumId, unsigned char bus, unsigned char device,
                           unsigned char function) {
    CDeviceInfo* record = MakeNonPCIDevice("NOT-USED-FOR-PCI", "NOT-USED-EITHER", enumId, "");
    record->setDeviceType(QVR_DEVICE_PCI);
    record->setPCIInfo(SPCIInfo{componentID, "DID", "SDID", "VID", "SVID", display});
    record->setBDFInfo(bus, device, function);
    record->setDisplay("DISPLAY");
    record->setVersion("16.5.0");
    record->setComponentType("FRMW");
    return record;
}

CDeviceInfo* MakeError(const std::string& display, const std::string& message) {
    CDeviceInfo* record = new CDeviceInfo();
    record->setStatus(QVR_STATUS_FAILURE);
    record->setDisplay(display);
    record->setErrorMsg(message);
    return record;
}

void AddOperatingSystem(QVRDataModel& model, bool full) {
    const SOSInfo os = full ? SOSInfo{"VENDOR", "x64", "7", "2", "1", "0", "Linux", "1234", "RHEL7"}
                            : SOSInfo{"VENDOR", "x64", "7", "2", "", "", "", "", "RHEL7"};
    CDeviceInfo record;
    record.setDependencyOS(std::vector<SOSInfo>(1, os));
    model.AddOperatingSystemInfo(&record);
}

void AddSystem(QVRDataModel& model, const std::string& systemID) {
    QVRCSystemInfo system;
    system.setSystemInfo(systemID);
    CDeviceInfo record;
    record.setSystemInfo(system);
    model.AddSystemInfo(&record);
}

// Markup, whitespace that attributes must escape, control characters, DEL,
// two- three- and four-byte UTF-8.
const std::string kAwkward =
    "A & <B> \"q\" 'a'\ttab\nnl\rcr \x01\x1f\x7f Contr\xC3\xB4le \xE4\xB8\xAD \xF0\x9F\x98\x80 \\";

void SetCollector(QVRDataModel& model) {
    CDeviceInfo record;
    record.setDisplay("Inventory Collector");
    record.setVersion("9.8.7 (BLD_42)");
    record.setComponentID("106946");
    model.AddInventoryCollectorInfo(&record);
}

CDeviceInfo* Full(CDeviceInfo* record, const std::string& suffix) {
    record->setDisplay(record->getDisplay() + suffix);
    record->setVersion(record->getVersion() + suffix);
    return record;
}

// Devices of every shape, with and without the optional fields.
void FillDevices(QVRDataModel& model) {
    model.Add(Full(MakePCIDevice("PCI with enum " + kAwkward, "C" + kAwkward, "E" + kAwkward, 0x3b, 0x1f, 7),
                   kAwkward));
    model.Add(MakePCIDevice("PCI without optional", "", "", 0, 0, 0));
    model.Add(MakePCIDevice("", "", "", 0xff, 0xff, 0xff));
    model.Add(
        Full(MakeNonPCIDevice("Non-PCI " + kAwkward, "159", "1" + kAwkward, "FQDD." + kAwkward), kAwkward));
    model.Add(MakeNonPCIDevice("Non-PCI enum only", "25", "2", ""));
    model.Add(MakeNonPCIDevice("Non-PCI FQDD only", "26", "", "NIC.Slot.1-1"));
    model.Add(MakeNonPCIDevice("", "", "", ""));
    CDeviceInfo* other = MakeNonPCIDevice("never written", "1", "", "");
    other->setDeviceType(QVR_DEVICE_UNKNOWN);
    model.Add(other);
    CDeviceInfo* empty = new CDeviceInfo();
    empty->setStatus(QVR_STATUS_SUCCESS);
    empty->setDeviceType(QVR_DEVICE_NONPCI);
    model.Add(empty);
}

void FillErrors(QVRDataModel& model) {
    model.Add(MakeError("/opt/mod " + kAwkward, "crashed " + kAwkward));
    model.Add(MakeError("/opt/quiet", ""));
    model.Add(MakeError("", "]]> end"));
}

void FillFull(QVRDataModel& model) {
    AddOperatingSystem(model, true);
    AddSystem(model, "0627" + kAwkward);
    FillDevices(model);
    FillErrors(model);
}

// Enough devices that the encoder and the output buffers work in many chunks,
// with multi-byte characters falling on every offset.
void FillMany(QVRDataModel& model) {
    AddOperatingSystem(model, false);
    for (int i = 0; i < 700; ++i) {
        const std::string n = std::to_string(i);
        const std::string pad(static_cast<size_t>(i % 5), 'y');
        if (i % 3 == 0) {
            model.Add(MakePCIDevice("Ctl " + n + pad + "\xC3\xA9", i % 2 ? n : "", i % 7 ? "" : n,
                                    static_cast<unsigned char>(i), static_cast<unsigned char>(i / 3),
                                    static_cast<unsigned char>(i % 8)));
        } else {
            model.Add(Full(MakeNonPCIDevice("Dev " + n + pad + "\xE4\xB8\xAD", n, i % 4 ? n : "",
                                            i % 5 ? "FQDD-" + n : ""),
                           i % 11 ? pad : "&<" + pad + "\xF0\x9F\x98\x80"));
        }
    }
    model.Add(MakeError("/opt/m", "failed"));
}

struct Case {
    const char* name;
    std::function<void(QVRDataModel&)> fill;
    const char* format;    // null: the default
    const char* out;       // null: standard output
    const char* log;       // null: standard output
    const char* encoding;  // null: not given
};

const Case kCases[] = {
    {"xml-utf8-file-full", FillFull, nullptr, "out.xml", "err.xml", "UTF-8"},
    {"xml-utf16-file-full", FillFull, "xml", "out.xml", "err.xml", nullptr},
    {"xml-utf16-explicit-full", FillFull, "XML", "out.xml", "err.xml", "UTF-16"},
    {"xml-stdout-full", FillFull, nullptr, nullptr, nullptr, "UTF-16"},
    {"xml-file-errors-to-stdout", FillFull, nullptr, "out.xml", nullptr, "UTF-8"},
    {"xml-empty-file", [](QVRDataModel&) {}, nullptr, "out.xml", "err.xml", "UTF-8"},
    {"xml-empty-stdout", [](QVRDataModel&) {}, nullptr, nullptr, nullptr, nullptr},
    {"xml-errors-only-stdout", FillErrors, nullptr, nullptr, nullptr, nullptr},
    {"xml-devices-only-utf16", FillDevices, nullptr, "out.xml", "err.xml", nullptr},
    {"xml-many-utf16", FillMany, nullptr, "out.xml", "err.xml", nullptr},
    {"xml-many-stdout", FillMany, nullptr, nullptr, nullptr, nullptr},
    // "-" names standard output, but as a file name it keeps the file's encoding.
    {"xml-dash-utf16", FillErrors, nullptr, "-", "-", nullptr},
    {"json-file-full", FillFull, "json", "out.json", "err.xml", "UTF-16"},
    {"json-stdout-full", FillFull, "JSON", nullptr, nullptr, "UTF-8"},
    {"json-empty-file", [](QVRDataModel&) {}, "json", "out.json", nullptr, nullptr},
    {"json-empty-stdout", [](QVRDataModel&) {}, "json", nullptr, nullptr, nullptr},
    {"json-many-file", FillMany, "json", "out.json", nullptr, nullptr},
};

void PrintTo(const Case& c, std::ostream* os) { *os << c.name; }

std::string GoldenPath(const std::string& file) { return std::string(SORVIK_GOLDEN_DIR) + "/" + file; }

class OutputGolden : public ::testing::TestWithParam<Case> {
protected:
    void TearDown() override { QVROutputterManager::GetInstance()->Release(); }
    FixedClock clock;
    TempDir dir;
};

TEST_P(OutputGolden, DocumentsAreTheKeptBytes) {
    const Case& c = GetParam();
    QVRDataModel model;
    SetCollector(model);
    c.fill(model);
    QVRArgumentList args;
    if (c.format != nullptr) args.insertValue(QVR_OPT_OUTPUTFORMAT, c.format);
    const auto at = [&](const char* name) { return std::string(name) == "-" ? name : dir.Path(name); };
    if (c.out != nullptr) args.insertValue(QVR_OPT_OUT, at(c.out));
    if (c.log != nullptr) args.insertValue(QVR_OPT_LOG, at(c.log));
    if (c.encoding != nullptr) args.insertValue(QVR_OPT_ENCODE, c.encoding);
    bool written = false;
    const std::string printed =
        CaptureStdout([&] { written = QVROutputterManager::GetInstance()->Write(&args, &model); });
    EXPECT_TRUE(written);

    // Each channel: what it carried, or absent when nothing went there.
    struct Channel {
        std::string suffix;
        bool present;
        std::string bytes;
    };
    std::vector<Channel> channels = {{".stdout", !printed.empty(), printed}};
    if (c.out != nullptr)
        channels.push_back({".out", FileExists(dir.Path(c.out)), ReadFile(dir.Path(c.out))});
    if (c.log != nullptr)
        channels.push_back({".log", FileExists(dir.Path(c.log)), ReadFile(dir.Path(c.log))});

    for (const Channel& channel : channels) {
        const std::string golden = GoldenPath(std::string(c.name) + channel.suffix);
        if (std::getenv("SORVIK_UPDATE_GOLDEN") != nullptr) {
            if (channel.present) std::ofstream(golden, std::ios::binary) << channel.bytes;
            continue;
        }
        SCOPED_TRACE(golden);
        ASSERT_EQ(FileExists(golden), channel.present);
        if (!channel.present) continue;
        const std::string expected = ReadFile(golden);
        ASSERT_EQ(expected.size(), channel.bytes.size());
        // The first differing byte, rather than two large documents.
        const auto mismatch = std::mismatch(expected.begin(), expected.end(), channel.bytes.begin());
        EXPECT_EQ(expected.end(), mismatch.first)
            << "first difference at byte " << (mismatch.first - expected.begin()) << ": expected "
            << expected.substr(static_cast<size_t>(mismatch.first - expected.begin()), 40) << " got "
            << channel.bytes.substr(static_cast<size_t>(mismatch.second - channel.bytes.begin()), 40);
    }
}

INSTANTIATE_TEST_SUITE_P(Table, OutputGolden, ::testing::ValuesIn(kCases),
                         [](const ::testing::TestParamInfo<Case>& info) {
                             std::string name = info.param.name;
                             for (char& ch : name)
                                 if (ch == '-') ch = '_';
                             return name;
                         });

}  // namespace

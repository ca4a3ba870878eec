#include "CDeviceInfo.h"

#include <gtest/gtest.h>

#include <tuple>

#include "QVRCICInfo.h"
#include "QVRDataModel.h"

namespace {

CDeviceInfo FullDevice() {
    CDeviceInfo r;
    r.setComponentType("FRMW");
    r.setComponentID("101");
    r.setVersion("1.2.3");
    r.setEnumId("e1");
    r.setFQDDInfo("NIC.1");
    r.setPCIInfo(SPCIInfo{"101", "1521", "1f60", "8086", "1028", "NIC"});
    r.setBDFInfo(0x3b, 0, 1);
    return r;
}

void SetPci(CDeviceInfo& r, std::string SPCIInfo::*field, const char* value) {
    SPCIInfo pci = r.getPCIInfo();
    pci.*field = value;
    r.setPCIInfo(pci);
}

// The duplicate test and operator== compare different fields, deliberately.
TEST(CDeviceInfo, DuplicateTestAndEqualityEachCompareTheirOwnFields) {
    // Changed field, change, still a duplicate, still ==.
    // clang-format off
    const std::vector<std::tuple<const char*, void (*)(CDeviceInfo&), bool, bool>> rows = {
        {"display", [](CDeviceInfo& r) { r.setDisplay("other"); }, true, false},
        {"FQDD", [](CDeviceInfo& r) { r.setFQDDInfo("NIC.2"); }, false, true},
        {"enum", [](CDeviceInfo& r) { r.setEnumId("e2"); }, false, true},
        {"function", [](CDeviceInfo& r) { r.setBDFInfo(0x3b, 0, 2); }, false, true},
        {"version", [](CDeviceInfo& r) { r.setVersion("9"); }, false, false},
        {"type", [](CDeviceInfo& r) { r.setComponentType("DRVR"); }, false, false},
        {"id", [](CDeviceInfo& r) { r.setComponentID("102"); }, false, false},
        {"PCI sub-device", [](CDeviceInfo& r) { SetPci(r, &SPCIInfo::subDeviceID, "0"); }, false, false},
        {"PCI display", [](CDeviceInfo& r) { SetPci(r, &SPCIInfo::display, "x"); }, true, true},
        {"error", [](CDeviceInfo& r) { r.setStatus(1), r.setErrorMsg("x"); }, true, true},
        {"file path", [](CDeviceInfo& r) { r.setFilePath("x"); }, true, false},
        {"dependency type", [](CDeviceInfo& r) { r.setDependencyType(0); }, true, false}};
    // clang-format on
    const CDeviceInfo a = FullDevice();
    for (const auto& row : rows) {
        CDeviceInfo b = FullDevice();
        std::get<1>(row)(b);
        EXPECT_EQ(a.checkForEquality(&b) + 2 * b.checkForEquality(&a), 3 * std::get<2>(row))
            << std::get<0>(row);
        EXPECT_EQ(a == b, std::get<3>(row)) << std::get<0>(row);
    }
    EXPECT_FALSE(a.checkForEquality(nullptr));
    CDeviceInfo b(a);  // deep copy
    b.setDependencyOS(std::vector<SOSInfo>(1));
    EXPECT_TRUE(a.getDependencyOS().empty());
    b.setFilePath("FOLDER\\sub\\file.exe");
    EXPECT_EQ(b.getFilePath(), std::string(CDeviceInfo::kDownloadBaseURL) + "FOLDER/sub/file.exe");
    b.setPCIInfo(0x8086, 0x1521, 0x1028, 0x1F60);
    EXPECT_EQ(b.getPCIInfo().subDeviceID, "1f60");
}

TEST(QVRDataModel, FilesRecordsByStatusAndKeepsTheFirstOperatingSystemList) {
    QVRDataModel model;
    CDeviceInfo* ok = new CDeviceInfo();
    ok->setStatus(0);
    EXPECT_TRUE(model.Add(ok) && model.Add(new CDeviceInfo()));  // status -1 is not success
    EXPECT_FALSE(model.Add(nullptr));
    EXPECT_EQ(model.GetDeviceList(), std::vector<CDeviceInfo*>{ok});
    EXPECT_EQ(model.GetErrorList().size(), 1u);
    CDeviceInfo record;
    record.setDependencyOS(std::vector<SOSInfo>(2));
    EXPECT_TRUE(model.AddOperatingSystemInfo(&record));
    record.setDependencyOS(std::vector<SOSInfo>(5));  // the repeats every module output carries
    EXPECT_TRUE(model.AddOperatingSystemInfo(&record));
    EXPECT_EQ(model.GetOperatingSystemList().size(), 2u);
    EXPECT_EQ(QVRCICInfo::BuildFromVersion("1.0 (A_B_42)") + QVRCICInfo::BuildFromVersion("1.0)_x"), "42");
}

}  // namespace

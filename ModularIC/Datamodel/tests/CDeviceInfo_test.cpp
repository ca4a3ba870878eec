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
    // clang-format off
    const std::vector<std::tuple<const char*, void (*)(CDeviceInfo&), bool, bool>> rows = {
        {"display", [](CDeviceInfo& r) { r.setDisplay("other"); }, true, false},
        {"FQDD", [](CDeviceInfo& r) { r.setFQDDInfo("NIC.2"); }, false, true},
        {"enum", [](CDeviceInfo& r) { r.setEnumId("e2"); }, false, true},
        {"bus", [](CDeviceInfo& r) { r.setBDFInfo(0x3c, 0, 1); }, false, true},
        {"function", [](CDeviceInfo& r) { r.setBDFInfo(0x3b, 0, 2); }, false, true},
        {"version", [](CDeviceInfo& r) { r.setVersion("9"); }, false, false},
        {"type", [](CDeviceInfo& r) { r.setComponentType("DRVR"); }, false, false},
        {"id", [](CDeviceInfo& r) { r.setComponentID("102"); }, false, false},
        {"PCI vendor", [](CDeviceInfo& r) { SetPci(r, &SPCIInfo::vendorID, "14e4"); }, false, false},
        {"PCI sub-device", [](CDeviceInfo& r) { SetPci(r, &SPCIInfo::subDeviceID, "0"); }, false, false},
        {"PCI display", [](CDeviceInfo& r) { SetPci(r, &SPCIInfo::display, "x"); }, true, true},
        {"status", [](CDeviceInfo& r) { r.setStatus(1); }, true, true},
        {"error", [](CDeviceInfo& r) { r.setErrorMsg("x"); }, true, true},
        {"detail", [](CDeviceInfo& r) { r.setDetail("x"); }, true, false},
        {"file path", [](CDeviceInfo& r) { r.setFilePath("x"); }, true, false},
        {"dependency type", [](CDeviceInfo& r) { r.setDependencyType(0); }, true, false}};
    // clang-format on
    const CDeviceInfo a = FullDevice();
    for (const auto& row : rows) {
        CDeviceInfo b = FullDevice();
        std::get<1>(row)(b);
        EXPECT_EQ(a.checkForEquality(&b), std::get<2>(row)) << std::get<0>(row);
        EXPECT_EQ(b.checkForEquality(&a), std::get<2>(row)) << std::get<0>(row);
        EXPECT_EQ(a == b, std::get<3>(row)) << std::get<0>(row);
    }
    EXPECT_FALSE(a.checkForEquality(nullptr));
    EXPECT_EQ(CDeviceInfo().getStatus(), -1);
    EXPECT_EQ(CDeviceInfo().getDependencyType(), 1);
}

TEST(CDeviceInfo, CopyIsDeepAndFormatsAreFixed) {
    CDeviceInfo a = FullDevice();
    a.setDependencyOS(std::vector<SOSInfo>(1));
    CDeviceInfo b(a);
    EXPECT_TRUE(b == a && b.checkForEquality(&a));
    b.setDependencyOS(std::vector<SOSInfo>());
    EXPECT_EQ(a.getDependencyOS().size(), 1u);

    a.setFilePath("FOLDER\\sub\\file.exe");
    EXPECT_EQ(a.getFilePath(), std::string(CDeviceInfo::kDownloadBaseURL) + "FOLDER/sub/file.exe");
    a.setPCIInfo(0x8086, 0x1521, 0x1028, 0x1F60);
    EXPECT_EQ(a.getPCIInfo().subDeviceID, "1f60");
    a.setBDFInfo(0x3b, 0x1f, 7);
    EXPECT_EQ(a.getBDFInfo(), 0x3b1f07u);
}

TEST(QVRDataModel, FilesRecordsByStatusAndKeepsCopiesOfSystemAndFirstOperatingSystemList) {
    QVRDataModel model;
    CDeviceInfo* ok = new CDeviceInfo();
    ok->setStatus(0);
    EXPECT_TRUE(model.Add(ok));
    EXPECT_TRUE(model.Add(new CDeviceInfo()));  // status -1 is not success
    EXPECT_FALSE(model.Add(nullptr));
    EXPECT_EQ(model.GetDeviceList(), std::vector<CDeviceInfo*>{ok});
    EXPECT_EQ(model.GetErrorList().size(), 1u);
    CDeviceInfo record;
    QVRCSystemInfo info;
    info.setSystemInfo("0A1B");
    record.setSystemInfo(info);
    EXPECT_TRUE(model.AddSystemInfo(&record));
    EXPECT_EQ(model.GetSystemInfo()->getSystemID(), "0A1B");
    record.setDependencyOS(std::vector<SOSInfo>(2));
    EXPECT_TRUE(model.AddOperatingSystemInfo(&record));
    record.setDependencyOS(std::vector<SOSInfo>(5));  // the repeats every module output carries
    EXPECT_TRUE(model.AddOperatingSystemInfo(&record));
    EXPECT_EQ(model.GetOperatingSystemList().size(), 2u);

    const QVRCICInfo defaults;
    EXPECT_EQ(
        (std::vector<std::string>{defaults.GetName(), defaults.GetVersion(), defaults.GetBuild(),
                                  defaults.GetComponentID(), defaults.GetComponentType()}),
        (std::vector<std::string>{"Inventory Collector", "21.09.200 (BLD_1155)", "1155", "106946", "APAC"}));
    EXPECT_EQ(QVRCICInfo::BuildFromVersion("1.0 (A_B_42)"), "42");
    EXPECT_EQ(QVRCICInfo::BuildFromVersion("1.0)_x"), "");
    record.setDisplay("Collector");
    record.setVersion("22.1 (BLD_7)");
    EXPECT_TRUE(model.AddInventoryCollectorInfo(&record));
    EXPECT_EQ(model.GetInventoryCollectorInfo().GetName() + model.GetInventoryCollectorInfo().GetBuild(),
              "Collector7");
    EXPECT_FALSE(model.AddInventoryCollectorInfo(nullptr));
}

}  // namespace

#include "CDeviceInfo.h"

#include <gtest/gtest.h>

#include <tuple>

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
}

}  // namespace

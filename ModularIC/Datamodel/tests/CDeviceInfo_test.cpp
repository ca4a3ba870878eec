#include "CDeviceInfo.h"

#include <gtest/gtest.h>

#include <memory>

namespace {

CDeviceInfo FullDevice() {
    CDeviceInfo r;
    r.setComponentType("FRMW");
    r.setComponentID("101");
    r.setVersion("1.2.3");
    r.setEnumId("e1");
    r.setFQDDInfo("NIC.1");
    SPCIInfo pci;
    pci.componentID = "101";
    pci.deviceID = "1521";
    pci.subDeviceID = "1f60";
    pci.vendorID = "8086";
    pci.subVendorID = "1028";
    pci.display = "NIC";
    r.setPCIInfo(pci);
    r.setBDFInfo(0x3b, 0, 1);
    r.setDisplay("Intel NIC");
    r.setDetail("detail");
    r.setFilePath("a\\b.exe");
    r.setStatus(0);
    return r;
}

TEST(CDeviceInfoDefaults, FreshRecordHasStatusMinusOneAndDependencyTypeOne) {
    CDeviceInfo r;
    EXPECT_EQ(r.getStatus(), -1);
    EXPECT_EQ(r.getDependencyType(), 1);
    EXPECT_EQ(r.getDeviceType(), 0);
    EXPECT_EQ(r.getMessageID(), 0);
    EXPECT_FALSE(r.getRebootRequired());
    EXPECT_TRUE(r.getComponentID().empty());
    EXPECT_TRUE(r.getDisplay().empty());
    EXPECT_TRUE(r.getDependencyOS().empty());
    EXPECT_TRUE(r.getSystemInfo().isEmpty());
    EXPECT_EQ(r.getBDFInfo(), 0u);
    EXPECT_EQ(r.getDeviceHandle(), nullptr);
}

struct FieldChange {
    const char* name;
    void (*change)(CDeviceInfo&);
    bool duplicate;  // checkForEquality still true
    bool equal;      // operator== still true
};

class EqualityRulesTest : public ::testing::TestWithParam<FieldChange> {};

TEST_P(EqualityRulesTest, EachRuleComparesItsOwnFields) {
    const CDeviceInfo a = FullDevice();
    CDeviceInfo b = FullDevice();
    ASSERT_TRUE(a.checkForEquality(&b));
    ASSERT_TRUE(a == b);
    GetParam().change(b);
    EXPECT_EQ(a.checkForEquality(&b), GetParam().duplicate);
    EXPECT_EQ(b.checkForEquality(&a), GetParam().duplicate);
    EXPECT_EQ(a == b, GetParam().equal);
}

INSTANTIATE_TEST_SUITE_P(
    Fields, EqualityRulesTest,
    ::testing::Values(
        FieldChange{"Display", [](CDeviceInfo& r) { r.setDisplay("other"); }, true, false},
        FieldChange{"FQDD", [](CDeviceInfo& r) { r.setFQDDInfo("NIC.2"); }, false, true},
        FieldChange{"EnumId", [](CDeviceInfo& r) { r.setEnumId("e2"); }, false, true},
        FieldChange{"Bus", [](CDeviceInfo& r) { r.setBDFInfo(0x3c, 0, 1); }, false, true},
        FieldChange{"Function", [](CDeviceInfo& r) { r.setBDFInfo(0x3b, 0, 2); }, false, true},
        FieldChange{"Version", [](CDeviceInfo& r) { r.setVersion("9"); }, false, false},
        FieldChange{"ComponentType", [](CDeviceInfo& r) { r.setComponentType("DRVR"); }, false, false},
        FieldChange{"ComponentID", [](CDeviceInfo& r) { r.setComponentID("102"); }, false, false},
        FieldChange{"PciVendor",
                    [](CDeviceInfo& r) {
                        SPCIInfo p = r.getPCIInfo();
                        p.vendorID = "14e4";
                        r.setPCIInfo(p);
                    },
                    false, false},
        FieldChange{"PciDisplay",
                    [](CDeviceInfo& r) {
                        SPCIInfo p = r.getPCIInfo();
                        p.display = "other";
                        r.setPCIInfo(p);
                    },
                    true, true},
        FieldChange{"Status", [](CDeviceInfo& r) { r.setStatus(1); }, true, true},
        FieldChange{"ErrorMsg", [](CDeviceInfo& r) { r.setErrorMsg("x"); }, true, true},
        FieldChange{"Detail", [](CDeviceInfo& r) { r.setDetail("x"); }, true, false},
        FieldChange{"FilePath", [](CDeviceInfo& r) { r.setFilePath("x"); }, true, false},
        FieldChange{"DependencyType", [](CDeviceInfo& r) { r.setDependencyType(0); }, true, false},
        FieldChange{"DeviceName", [](CDeviceInfo& r) { r.setDeviceName("x"); }, true, true}),
    [](const ::testing::TestParamInfo<FieldChange>& info) { return std::string(info.param.name); });

TEST(CDeviceInfoEquality, NullIsNeverADuplicate) {
    const CDeviceInfo a = FullDevice();
    EXPECT_FALSE(a.checkForEquality(nullptr));
}

TEST(CDeviceInfoCopy, CopyIsDeepAndIndependent) {
    CDeviceInfo a = FullDevice();
    std::vector<SOSInfo> os(1);
    os[0].name = "Debian";
    a.setDependencyOS(os);
    QVRCSystemInfo system;
    system.setSystemInfo("0A1B");
    a.setSystemInfo(system);
    a.setReleaseID("R1");

    CDeviceInfo b(a);
    EXPECT_TRUE(b == a);
    EXPECT_TRUE(b.checkForEquality(&a));
    EXPECT_EQ(b.getDependencyOS().size(), 1u);
    EXPECT_EQ(b.getSystemInfo().getSystemID(), "0A1B");
    EXPECT_EQ(b.getReleaseID(), "R1");
    EXPECT_EQ(b.getStatus(), 0);

    b.setReleaseID("R2");
    b.setDependencyOS(std::vector<SOSInfo>());
    b.setVersion("other");
    EXPECT_EQ(a.getReleaseID(), "R1");
    EXPECT_EQ(a.getDependencyOS().size(), 1u);
    EXPECT_EQ(a.getVersion(), "1.2.3");

    CDeviceInfo c;
    c = a;
    EXPECT_TRUE(c == a);
    EXPECT_EQ(c.getReleaseID(), "R1");
    CDeviceInfo& alias = c;
    c = alias;
    EXPECT_EQ(c.getReleaseID(), "R1");
}

TEST(CDeviceInfoOperatingSystems, SharedListIsSeenByEveryRecordAndReplaceableForOne) {
    auto shared = std::make_shared<const std::vector<SOSInfo>>(3);
    CDeviceInfo a;
    CDeviceInfo b;
    a.setDependencyOS(shared);
    b.setDependencyOS(shared);
    EXPECT_EQ(&a.getDependencyOS(), &b.getDependencyOS());
    EXPECT_EQ(a.getDependencyOS().size(), 3u);
    b.setDependencyOS(std::vector<SOSInfo>(1));
    EXPECT_EQ(a.getDependencyOS().size(), 3u);
    EXPECT_EQ(b.getDependencyOS().size(), 1u);
}

TEST(CDeviceInfoAccessors, FilePathTurnsBackslashesIntoSlashesBehindTheBaseURL) {
    CDeviceInfo r;
    r.setFilePath("FOLDER\\sub\\file.exe");
    EXPECT_EQ(r.getFilePath(), std::string(CDeviceInfo::kDownloadBaseURL) + "FOLDER/sub/file.exe");
}

TEST(CDeviceInfoAccessors, NumericPCIInfoIsLowerCaseHex) {
    CDeviceInfo r;
    r.setPCIInfo(0x8086, 0x1521, 0x1028, 0x1F60);
    EXPECT_EQ(r.getPCIInfo().vendorID, "8086");
    EXPECT_EQ(r.getPCIInfo().deviceID, "1521");
    EXPECT_EQ(r.getPCIInfo().subVendorID, "1028");
    EXPECT_EQ(r.getPCIInfo().subDeviceID, "1f60");
}

TEST(CDeviceInfoAccessors, BDFIsPackedBusDeviceFunction) {
    CDeviceInfo r;
    _BDFInfo bdf;
    bdf.bus = 0x3b;
    bdf.device = 0x1f;
    bdf.function = 7;
    r.setBDFInfo(bdf);
    EXPECT_EQ(r.getBDFInfo(), 0x3b1f07u);
    EXPECT_EQ(r.getBDF().device, 0x1f);
}

TEST(CDeviceInfoAccessors, RarelyUsedFieldsRoundTrip) {
    CDeviceInfo r;
    r.setParentComponentID("p");
    r.setParentDeviceType(2);
    r.setDependencyContext("ctx");
    r.setDependencyPlatforms({"a", "b"});
    r.setMessageID(7);
    r.setUpdateStatus(3);
    r.setCurrentVersion("cv");
    r.setRebootRequired(true);
    r.setDeviceIdentifier("di");
    r.setDeviceUdpateID(9u);
    r.setDeviceSpecificID(5);
    r.setBus(1);
    r.setDeviceBus(2);
    r.setDeviceBusFunction(3);
    int handle = 0;
    r.setDeviceHandle(&handle);
    EXPECT_EQ(r.getParentComponentID(), "p");
    EXPECT_EQ(r.getParentDeviceType(), 2);
    EXPECT_EQ(r.getDependencyContext(), "ctx");
    EXPECT_EQ(r.getDependencyPlatforms().size(), 2u);
    EXPECT_EQ(r.getMessageID(), 7);
    EXPECT_EQ(r.getUpdateStatus(), 3);
    EXPECT_EQ(r.getCurrentVersion(), "cv");
    EXPECT_TRUE(r.getRebootRequired());
    EXPECT_EQ(r.getDeviceIdentifier(), "di");
    EXPECT_EQ(r.getDeviceUdpateID(), 9u);
    EXPECT_EQ(r.getDeviceSpecificID(), 5);
    EXPECT_EQ(r.getBus(), 1);
    EXPECT_EQ(r.getDeviceBus(), 2);
    EXPECT_EQ(r.getDeviceBusFunction(), 3);
    EXPECT_EQ(r.getDeviceHandle(), &handle);
}

}  // namespace

#include "QVRDataModel.h"

#include <gtest/gtest.h>

#include "QVRCICInfo.h"

namespace {

TEST(QVRDataModel, AddFilesByStatusAndOwnsTheRecords) {
    QVRDataModel model;
    CDeviceInfo* ok = new CDeviceInfo();
    ok->setStatus(0);
    CDeviceInfo* failed = new CDeviceInfo();
    failed->setStatus(1);
    CDeviceInfo* unset = new CDeviceInfo();
    EXPECT_TRUE(model.Add(ok));
    EXPECT_TRUE(model.Add(failed));
    EXPECT_TRUE(model.Add(unset));
    EXPECT_FALSE(model.Add(nullptr));
    ASSERT_EQ(model.GetDeviceList().size(), 1u);
    EXPECT_EQ(model.GetDeviceList()[0], ok);
    ASSERT_EQ(model.GetErrorList().size(), 2u);
    EXPECT_EQ(model.GetErrorList()[0], failed);
}

TEST(QVRDataModel, SystemAndOperatingSystemAreCopied) {
    QVRDataModel model;
    EXPECT_EQ(model.GetSystemInfo(), nullptr);
    EXPECT_EQ(model.GetOperatingSystemInfo(), nullptr);
    CDeviceInfo system;
    QVRCSystemInfo info;
    info.setSystemInfo("0A1B");
    system.setSystemInfo(info);
    EXPECT_TRUE(model.AddSystemInfo(&system));
    ASSERT_NE(model.GetSystemInfo(), nullptr);
    EXPECT_EQ(model.GetSystemInfo()->getSystemID(), "0A1B");

    CDeviceInfo os;
    std::vector<SOSInfo> entries(2);
    entries[0].name = "first";
    os.setDependencyOS(entries);
    EXPECT_TRUE(model.AddOperatingSystemInfo(&os));
    CDeviceInfo later;
    later.setDependencyOS(std::vector<SOSInfo>(5));
    EXPECT_TRUE(model.AddOperatingSystemInfo(&later));
    ASSERT_EQ(model.GetOperatingSystemList().size(), 2u);
    EXPECT_EQ(model.GetOperatingSystemInfo()->name, "first");
}

TEST(QVRCICInfo, DefaultsAreTheShippedCollector) {
    QVRCICInfo info;
    EXPECT_EQ(info.GetName(), "Inventory Collector");
    EXPECT_EQ(info.GetVersion(), "21.09.200 (BLD_1155)");
    EXPECT_EQ(info.GetBuild(), "1155");
    EXPECT_EQ(info.GetComponentID(), "106946");
    EXPECT_EQ(info.GetComponentType(), "APAC");
}

TEST(QVRCICInfo, BuildIsBetweenLastUnderscoreAndLastParenthesis) {
    EXPECT_EQ(QVRCICInfo::BuildFromVersion("1.0 (A_B_42)"), "42");
    EXPECT_EQ(QVRCICInfo::BuildFromVersion("1.0"), "");
    EXPECT_EQ(QVRCICInfo::BuildFromVersion("1.0)_x"), "");
}

TEST(QVRDataModel, CollectorInfoComesFromTheRecord) {
    QVRDataModel model;
    CDeviceInfo record;
    record.setDisplay("Collector");
    record.setVersion("22.1 (BLD_7)");
    record.setComponentID("5");
    EXPECT_TRUE(model.AddInventoryCollectorInfo(&record));
    EXPECT_EQ(model.GetInventoryCollectorInfo().GetName(), "Collector");
    EXPECT_EQ(model.GetInventoryCollectorInfo().GetBuild(), "7");
    EXPECT_FALSE(model.AddInventoryCollectorInfo(nullptr));
}

}  // namespace

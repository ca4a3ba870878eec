#include "CQVRModuleList.h"

#include <gtest/gtest.h>

namespace {

CQVRModuleDetail* Named(const char* dir) {
    CQVRModuleDetail* m = new CQVRModuleDetail();
    m->configuredDir = dir;
    return m;
}

TEST(CQVRModuleList, StartsEmpty) {
    CQVRModuleList list;
    EXPECT_EQ(list.GetSizePreInstallList() + list.GetSizePriorityList() + list.GetSizeModuleList() +
                  list.GetSizeSerialRunModuleList() + list.GetSizePostInstallList(),
              0u);
}

TEST(CQVRModuleList, EachAddAppendsToItsOwnListInOrder) {
    CQVRModuleList list;
    list.AddPreInventoryList(Named("pre1"));
    list.AddPreInventoryList(Named("pre2"));
    list.AddPriorityList(Named("prio"));
    list.AddModuleList(Named("mod"));
    list.AddSerialRunModuleList(Named("serial"));
    list.AddPostInventoryList(Named("post"));
    ASSERT_EQ(list.GetSizePreInstallList(), 2u);
    EXPECT_EQ(list.GetPreInstallList()[0]->configuredDir, "pre1");
    EXPECT_EQ(list.GetPreInstallList()[1]->configuredDir, "pre2");
    EXPECT_EQ(list.GetPriorityInstallList()[0]->configuredDir, "prio");
    EXPECT_EQ(list.GetModuleList()[0]->configuredDir, "mod");
    EXPECT_EQ(list.GetSerialRunModuleList()[0]->configuredDir, "serial");
    EXPECT_EQ(list.GetPostInstallList()[0]->configuredDir, "post");
}

TEST(CQVRModuleList, ClearModuleListDeletesAndEmpties) {
    CQVRModuleList::List records = {Named("a"), Named("b")};
    CQVRModuleList::ClearModuleList(records);
    EXPECT_TRUE(records.empty());
}

}  // namespace

#include "CQVRModuleManager.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "ConfigTestSupport.h"
#include "QVROptionKeys.h"

namespace {

const char* const kConfig = R"({
  "SorVikConfig": {
    "PreInstall":  [ { "_dir": "prep", "_type": "cli", "__text": "./prep.sh", "#GUID": "1000", "_CmpType": "NA" },
                     { "_dir": "prep2", "__text": "./prep2.sh", "#GUID": "1003", "_CmpType": "",
                       "_priority": "1", "_isParallelRunSupported": "false" } ],
    "PostInstall": [ { "_dir": "post", "_type": "cli", "__text": "./post.sh", "#GUID": "1001", "_CmpType": "NA" } ],
    "Generation": [
      { "_type": "GenPre12G",
        "InvComponent": [
          { "_dir": "biosinv", "__text": "./biosinv", "#GUID": "2000", "_CmpType": "FRMW, BIOS", "_priority": "1" },
          { "_dir": "nicinv", "__text": "./nicinv", "#GUID": "2001", "_CmpType": "FRMW" },
          { "_dir": "serialinv", "__text": "./serialinv", "#GUID": "2002", "_CmpType": "DRVR",
            "_priority": "1", "_isParallelRunSupported": "false" },
          { "_dir": "boolinv", "__text": "./boolinv", "#GUID": "2003", "_CmpType": "APAC",
            "_isParallelRunSupported": false },
          { "_dir": "nainv", "__text": "./nainv", "#GUID": "2004", "_CmpType": "NA" },
          { "_dir": "emptyinv", "__text": "./emptyinv", "#GUID": "2005", "_CmpType": "" },
          { "_dir": "numprio", "__text": "./numprio", "#GUID": "2006", "_CmpType": "FRMW", "_priority": 1 } ] },
      { "_type": "GenSixteenG",
        "InvComponent": [ { "_dir": "future", "#GUID": "2999", "_CmpType": "NA" } ] },
      { "_type": "Generic",
        "InvComponent": [ { "_dir": "nicinv", "__text": "./nicinv", "#GUID": "2001", "_CmpType": "FRMW" } ] }
    ]
  }
})";

const std::set<std::string> kNames = {"GenPre12G", "Generic"};

std::vector<std::string> Dirs(const CQVRModuleList::List& list) {
    std::vector<std::string> dirs;
    for (const CQVRModuleDetail* m : list) dirs.push_back(m->configuredDir);
    return dirs;
}

typedef std::vector<std::string> Strings;

class ModuleManagerTest : public ::testing::Test {
protected:
    void SetUp() override { dir.Write(kConfig); }
    int Run(const std::string& base = "/opt/mods/") {
        CQVRModuleManager manager(&args, &kNames, base);
        return manager.PopulateModuleList(&list);
    }
    ConfigDir dir;
    QVRArgumentList args;
    CQVRModuleList list;
};

TEST_F(ModuleManagerTest, NoOptionsPlacesEveryGenerationModuleByPriorityAndParallelFlag) {
    ASSERT_EQ(Run(), 0);
    EXPECT_EQ(Dirs(list.GetPreInstallList()), (Strings{"prep", "prep2"}));
    EXPECT_EQ(Dirs(list.GetPostInstallList()), (Strings{"post"}));
    EXPECT_EQ(Dirs(list.GetPriorityInstallList()), (Strings{"biosinv"}));
    EXPECT_EQ(Dirs(list.GetModuleList()), (Strings{"nicinv", "nainv", "emptyinv", "numprio", "nicinv"}));
    EXPECT_EQ(Dirs(list.GetSerialRunModuleList()), (Strings{"serialinv", "boolinv"}));
    EXPECT_EQ(list.GetSizePriorityList(), 1u);
    EXPECT_EQ(list.GetSizeModuleList(), 5u);
}

TEST_F(ModuleManagerTest, WorkingDirIsBaseDirPlusDirWithoutSeparator) {
    ASSERT_EQ(Run("/opt/mods"), 0);
    EXPECT_EQ(list.GetPreInstallList()[0]->workingDir, "/opt/modsprep");
    EXPECT_EQ(list.GetPreInstallList()[0]->configuredDir, "prep");
    EXPECT_EQ(list.GetPostInstallList()[0]->workingDir, "/opt/modspost");
    EXPECT_EQ(list.GetPriorityInstallList()[0]->workingDir, "/opt/modsbiosinv");
    EXPECT_EQ(list.GetSerialRunModuleList()[0]->workingDir, "/opt/modsserialinv");
}

TEST_F(ModuleManagerTest, SerializeYesPutsEveryGenerationModuleInTheSerialList) {
    args.insertValue(QVR_OPT_SERIALIZE, "yes");
    ASSERT_EQ(Run(), 0);
    EXPECT_EQ(list.GetSizePriorityList(), 0u);
    EXPECT_EQ(list.GetSizeModuleList(), 0u);
    EXPECT_EQ(Dirs(list.GetSerialRunModuleList()), (Strings{"biosinv", "nicinv", "serialinv", "boolinv",
                                                            "nainv", "emptyinv", "numprio", "nicinv"}));
    EXPECT_EQ(list.GetSizePreInstallList(), 2u);
    EXPECT_EQ(list.GetSizePostInstallList(), 1u);
}

class SerializeValueTest : public ModuleManagerTest, public ::testing::WithParamInterface<const char*> {};

TEST_P(SerializeValueTest, AnyOtherValueKeepsParallelRunning) {
    args.insertValue(QVR_OPT_SERIALIZE, GetParam());
    ASSERT_EQ(Run(), 0);
    EXPECT_EQ(list.GetSizePriorityList(), 1u);
    EXPECT_EQ(list.GetSizeSerialRunModuleList(), 2u);
}

INSTANTIATE_TEST_SUITE_P(Values, SerializeValueTest,
                         ::testing::Values("Yes", "YES", "no", "", " yes", "a,yes"));

TEST_F(ModuleManagerTest, ComptypeFilterMatchesAnyTokenWithSpacesRemoved) {
    args.insertValue(QVR_OPT_COMPTYPE, "BIOS");
    ASSERT_EQ(Run(), 0);
    EXPECT_EQ(Dirs(list.GetPriorityInstallList()), (Strings{"biosinv"}));
    // "NA" is kept whatever the filter; empty compType is dropped.
    EXPECT_EQ(Dirs(list.GetModuleList()), (Strings{"nainv"}));
    EXPECT_EQ(list.GetSizeSerialRunModuleList(), 0u);
    // Mandatory lists are never filtered.
    EXPECT_EQ(list.GetSizePreInstallList(), 2u);
}

TEST_F(ModuleManagerTest, ComptypeFilterIsCaseSensitive) {
    args.insertValue(QVR_OPT_COMPTYPE, "frmw");
    ASSERT_EQ(Run(), 0);
    EXPECT_EQ(Dirs(list.GetModuleList()), (Strings{"nainv"}));
    EXPECT_EQ(list.GetSizePriorityList(), 0u);
}

TEST_F(ModuleManagerTest, EmptyComptypeOptionDropsEverythingButNA) {
    args.insertValue(QVR_OPT_COMPTYPE, "");
    ASSERT_EQ(Run(), 0);
    EXPECT_EQ(Dirs(list.GetModuleList()), (Strings{"nainv"}));
}

TEST_F(ModuleManagerTest, DisableListSkipsGenerationModulesButNotMandatoryOnes) {
    args.insertValue(QVR_OPT_DISABLE, "1000,2001,2002");
    ASSERT_EQ(Run(), 0);
    EXPECT_EQ(Dirs(list.GetPreInstallList()), (Strings{"prep", "prep2"}));
    EXPECT_EQ(Dirs(list.GetModuleList()), (Strings{"nainv", "emptyinv", "numprio"}));
    EXPECT_EQ(Dirs(list.GetSerialRunModuleList()), (Strings{"boolinv"}));
}

TEST_F(ModuleManagerTest, MissingFileReturnsTwoAndLeavesListsUntouched) {
    CQVRModuleList other;
    ScopedTempDir empty;
    ScopedChdir cwd(empty.path());
    CQVRModuleManager manager(&args, &kNames, "/base/");
    ::testing::internal::CaptureStdout();
    EXPECT_EQ(manager.PopulateModuleList(&other), 2);
    EXPECT_EQ(::testing::internal::GetCapturedStdout(), "Error! Incorrect file!!\n");
    EXPECT_EQ(other.GetSizePreInstallList() + other.GetSizePostInstallList() + other.GetSizeModuleList() +
                  other.GetSizePriorityList() + other.GetSizeSerialRunModuleList(),
              0u);
}

TEST_F(ModuleManagerTest, MalformedFileReturnsTwo) {
    dir.Write("{ not json");
    EXPECT_EQ(Run(), 2);
    EXPECT_EQ(list.GetSizePreInstallList(), 0u);
}

TEST_F(ModuleManagerTest, MissingSectionsContributeNothing) {
    dir.Write("{\"SorVikConfig\": {\"PostInstall\": [{\"_dir\": \"p\"}]}}");
    ASSERT_EQ(Run(), 0);
    EXPECT_EQ(list.GetSizePreInstallList(), 0u);
    EXPECT_EQ(list.GetSizePostInstallList(), 1u);
    EXPECT_EQ(list.GetSizeModuleList(), 0u);
}

TEST_F(ModuleManagerTest, NullArgumentsAndNamesSelectOnlyMandatoryModules) {
    CQVRModuleManager manager(nullptr, nullptr, "");
    ASSERT_EQ(manager.PopulateModuleList(&list), 0);
    EXPECT_EQ(list.GetSizePreInstallList(), 2u);
    EXPECT_EQ(list.GetSizeModuleList() + list.GetSizePriorityList() + list.GetSizeSerialRunModuleList(), 0u);
}

// ---- The parts one by one -------------------------------------------------

CQVRModuleDetail* Module(const std::string& guid, const std::string& compType,
                         const std::string& priority = "", const std::string& parallel = "") {
    CQVRModuleDetail* m = new CQVRModuleDetail();
    m->configuredDir = m->workingDir = "d" + guid;
    m->guid = guid;
    m->compType = compType;
    m->priority = priority;
    m->isParallelRunSupported = parallel;
    return m;
}

TEST(ModuleManagerParts, FiltersAreOffUntilInitFilterSeesTheOptions) {
    QVRArgumentList args;
    args.insertValue(QVR_OPT_DISABLE, "A");
    CQVRModuleManager manager(&args, nullptr, "");
    std::unique_ptr<CQVRModuleDetail> m(Module("A", "FRMW"));
    EXPECT_FALSE(manager.IsDisableFilterSet());
    EXPECT_FALSE(manager.IsPresentInDisableList(m.get()));
    manager.InitFilter();
    EXPECT_TRUE(manager.IsDisableFilterSet());
    EXPECT_FALSE(manager.IsCompTypeFilterSet());
    EXPECT_TRUE(manager.IsPresentInDisableList(m.get()));
    m->guid = "a";
    EXPECT_FALSE(manager.IsPresentInDisableList(m.get()));
    EXPECT_TRUE(manager.ApplyFilter(m.get()));
}

struct FilterCase {
    const char* compType;
    bool kept;
};

class ApplyFilterTest : public ::testing::TestWithParam<FilterCase> {};

TEST_P(ApplyFilterTest, KeepsWhenAnyTokenIsInTheFilter) {
    QVRArgumentList args;
    args.insertValue(QVR_OPT_COMPTYPE, "BIOS,DRVR");
    CQVRModuleManager manager(&args, nullptr, "");
    manager.InitFilter();
    std::unique_ptr<CQVRModuleDetail> m(Module("G", GetParam().compType));
    EXPECT_EQ(manager.ApplyFilter(m.get()), GetParam().kept) << GetParam().compType;
}

INSTANTIATE_TEST_SUITE_P(Cases, ApplyFilterTest,
                         ::testing::Values(FilterCase{"NA", true}, FilterCase{"", false},
                                           FilterCase{"BIOS", true}, FilterCase{"FRMW, BIOS", true},
                                           FilterCase{"FRMW ,B I O S", true}, FilterCase{"FRMW", false},
                                           FilterCase{"bios", false}, FilterCase{"na", false},
                                           FilterCase{",,DRVR,", true}, FilterCase{"FRMW;BIOS", false},
                                           FilterCase{" NA", false}));

TEST(ModuleManagerParts, CheckForParallelRunUsesTheSmallestValue) {
    QVRArgumentList args;
    args.insertValue(QVR_OPT_SERIALIZE, "yes,zzz");
    CQVRModuleManager manager(&args, nullptr, "");
    manager.CheckForParallelRun();
    EXPECT_FALSE(manager.IsParallelRunAllowed());

    QVRArgumentList other;
    other.insertValue(QVR_OPT_SERIALIZE, "yes,abc");
    CQVRModuleManager second(&other, nullptr, "");
    second.CheckForParallelRun();
    EXPECT_TRUE(second.IsParallelRunAllowed());
}

TEST(ModuleManagerParts, AddModuleToListPlacesByFlags) {
    CQVRModuleManager manager(nullptr, nullptr, "B/");
    CQVRModuleList list;
    manager.AddModuleToList(Module("1", "", "1", ""), &list);
    manager.AddModuleToList(Module("2", "", "1", "false"), &list);
    manager.AddModuleToList(Module("3", "", "", "FALSE"), &list);
    manager.AddModuleToList(Module("4", "", "01", "true"), &list);
    EXPECT_EQ(Dirs(list.GetPriorityInstallList()), (Strings{"d1"}));
    EXPECT_EQ(Dirs(list.GetSerialRunModuleList()), (Strings{"d2"}));
    EXPECT_EQ(Dirs(list.GetModuleList()), (Strings{"d3", "d4"}));
    EXPECT_EQ(list.GetModuleList()[0]->workingDir, "B/d3");
}

TEST(ModuleManagerParts, AddModuleToListWithNullDoesNothing) {
    CQVRModuleManager manager(nullptr, nullptr, "B/");
    std::unique_ptr<CQVRModuleDetail> m(Module("1", ""));
    manager.AddModuleToList(m.get(), nullptr);
    EXPECT_EQ(m->workingDir, "d1");
    CQVRModuleList list;
    manager.AddModuleToList(nullptr, &list);
    EXPECT_EQ(list.GetSizeModuleList(), 0u);
}

TEST(ModuleManagerParts, PopulateMandatoryListIgnoresEveryFilter) {
    QVRArgumentList args;
    args.insertValue(QVR_OPT_DISABLE, "1");
    args.insertValue(QVR_OPT_COMPTYPE, "BIOS");
    args.insertValue(QVR_OPT_SERIALIZE, "yes");
    CQVRModuleManager manager(&args, nullptr, "B/");
    manager.InitFilter();
    manager.CheckForParallelRun();
    CQVRModuleList list;
    std::vector<CQVRModuleDetail*> pre = {Module("1", "", "1", "false")};
    std::vector<CQVRModuleDetail*> post = {Module("2", "FRMW")};
    manager.PopulateMandatoryList("PreInstall", &list, pre);
    manager.PopulateMandatoryList("PostInstall", &list, post);
    EXPECT_TRUE(pre.empty());
    EXPECT_EQ(Dirs(list.GetPreInstallList()), (Strings{"d1"}));
    EXPECT_EQ(list.GetPreInstallList()[0]->workingDir, "B/d1");
    EXPECT_EQ(Dirs(list.GetPostInstallList()), (Strings{"d2"}));
}

TEST(ModuleManagerParts, PopulateMandatoryListWithAnotherSectionPlacesNothing) {
    CQVRModuleManager manager(nullptr, nullptr, "");
    CQVRModuleList list;
    std::vector<CQVRModuleDetail*> records = {Module("1", ""), Module("2", "")};
    manager.PopulateMandatoryList("Generation", &list, records);  // the records are released
    EXPECT_TRUE(records.empty());
    EXPECT_EQ(list.GetSizePreInstallList() + list.GetSizePostInstallList(), 0u);
}

TEST(ModuleManagerParts, PopulateListAppliesSerializeDisableAndFilter) {
    QVRArgumentList args;
    args.insertValue(QVR_OPT_DISABLE, "2");
    args.insertValue(QVR_OPT_COMPTYPE, "FRMW");
    args.insertValue(QVR_OPT_SERIALIZE, "yes");
    CQVRModuleManager manager(&args, nullptr, "");
    manager.InitFilter();
    CQVRModuleList list;
    std::vector<CQVRModuleDetail*> records = {Module("1", "FRMW", "1"), Module("2", "FRMW"),
                                              Module("3", "BIOS"), Module("4", "NA")};
    EXPECT_EQ(manager.PopulateList(&list, records), 0);
    EXPECT_TRUE(records.empty());
    EXPECT_EQ(Dirs(list.GetSerialRunModuleList()), (Strings{"d1", "d4"}));
    EXPECT_EQ(list.GetSizePriorityList(), 0u);
}

}  // namespace

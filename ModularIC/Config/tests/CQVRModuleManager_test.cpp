#include "CQVRModuleManager.h"

#include <gtest/gtest.h>

#include <tuple>

#include "ConfigTestSupport.h"
#include "QVROptionKeys.h"

namespace {

// Skipped records must be released: the sanitizer build reports any leak.
TEST(ModuleSelection, OptionsDecideTheGenerationListsOnly) {
    const Strings kModules = {"nicinv", "nainv", "emptyinv", "numprio", "nicinv"};
    // clang-format off
    typedef std::vector<std::pair<const char*, const char*>> Options;
    const std::vector<std::tuple<Options, Strings, Strings, Strings>> rows = {
        {{}, {"biosinv"}, kModules, {"serialinv", "boolinv"}},
        {{{QVR_OPT_SERIALIZE, "yes"}}, {}, {}, kGenerationOrder},
        {{{QVR_OPT_SERIALIZE, "yes,zzz"}}, {}, {}, kGenerationOrder},  // the smallest value counts
        {{{QVR_OPT_SERIALIZE, "yes,abc"}}, {"biosinv"}, kModules, {"serialinv", "boolinv"}},
        {{{QVR_OPT_SERIALIZE, "Yes"}}, {"biosinv"}, kModules, {"serialinv", "boolinv"}},
        {{{QVR_OPT_SERIALIZE, " yes"}}, {"biosinv"}, kModules, {"serialinv", "boolinv"}},
        {{{QVR_OPT_COMPTYPE, "BIOS"}}, {"biosinv"}, {"nainv"}, {}},
        {{{QVR_OPT_COMPTYPE, "frmw"}}, {}, {"nainv"}, {}},
        {{{QVR_OPT_COMPTYPE, ""}}, {}, {"nainv"}, {}},
        {{{QVR_OPT_DISABLE, "1000,2001,2002"}}, {"biosinv"}, {"nainv", "emptyinv", "numprio"}, {"boolinv"}},
        {{{QVR_OPT_DISABLE, "2000"}, {QVR_OPT_COMPTYPE, "FRMW"}, {QVR_OPT_SERIALIZE, "yes"}}, {}, {},
         {"nicinv", "nainv", "numprio", "nicinv"}}};
    // clang-format on
    for (const auto& row : rows) {
        ConfigDir dir;
        dir.Write(kConfig);
        QVRArgumentList args;
        for (const auto& option : std::get<0>(row)) args.insertValue(option.first, option.second);
        SCOPED_TRACE("row " + std::to_string(&row - &rows[0]));
        CQVRModuleList list;
        ASSERT_EQ(CQVRModuleManager(&args, &kNames, "/opt/mods").PopulateModuleList(&list), 0);
        EXPECT_EQ(Dirs(list.GetPriorityInstallList()), std::get<1>(row));
        EXPECT_EQ(Dirs(list.GetModuleList()), std::get<2>(row));
        EXPECT_EQ(Dirs(list.GetSerialRunModuleList()), std::get<3>(row));
        // Pre- and post-install modules always run, whatever the options.
        EXPECT_EQ(Dirs(list.GetPreInstallList()), (Strings{"prep", "prep2"}));
        EXPECT_EQ(Dirs(list.GetPostInstallList()), (Strings{"post"}));
        for (auto l : {&list.GetPreInstallList(), &list.GetPriorityInstallList(), &list.GetModuleList(),
                       &list.GetSerialRunModuleList(), &list.GetPostInstallList()})
            for (const CQVRModuleDetail* m : *l) EXPECT_EQ(m->workingDir, "/opt/mods" + m->configuredDir);
    }
}

// Absent sections contribute nothing and are no failure.
TEST(ModuleSelection, MissingSectionsGiveNothing) {
    ConfigDir dir;
    dir.Write("{\"SorVikConfig\": {\"PostInstall\": [{\"_dir\": \"p\"}]}}");
    CQVRModuleList list;
    ASSERT_EQ(CQVRModuleManager(nullptr, &kNames, "/b/").PopulateModuleList(&list), 0);
    EXPECT_EQ(Dirs(list.GetPostInstallList()), (Strings{"p"}));
    EXPECT_EQ(list.GetSizePreInstallList() + list.GetSizeModuleList() + list.GetSizeSerialRunModuleList(),
              0u);
}

TEST(ModuleSelection, ComptypeTokensLoseEverySpaceAndNAIsKeptWhateverTheFilter) {
    // clang-format off
    const std::vector<std::tuple<const char*, char, Strings>> tokenRows = {
        {"", ',', {}}, {"a,,b", ',', {"a", "", "b"}}, {"a,", ',', {"a"}}, {"a,,", ',', {"a", ""}},
        {",", ',', {""}}, {" F R M W , B I O S ", ',', {"FRMW", "BIOS"}}, {"a\t,b", ',', {"a\t", "b"}},
        {"a;b,c", ';', {"a", "b,c"}}};
    const std::vector<std::pair<const char*, bool>> filterRows = {
        {"NA", true}, {"", false}, {"BIOS", true}, {"FRMW ,B I O S", true}, {"FRMW", false}, {"bios", false},
        {"na", false}, {" NA", false}, {",,DRVR,", true}, {"FRMW;BIOS", false}};
    // clang-format on
    for (const auto& row : tokenRows) {
        Strings tokens;
        Tokenizer(std::get<0>(row), tokens, std::get<1>(row));
        EXPECT_EQ(tokens, std::get<2>(row)) << "'" << std::get<0>(row) << "'";
    }
    QVRArgumentList args;
    args.insertValue(QVR_OPT_COMPTYPE, "BIOS,DRVR");
    CQVRModuleManager manager(&args, nullptr, "");
    manager.InitFilter();
    for (const auto& row : filterRows) {
        CQVRModuleDetail m;
        m.compType = row.first;
        EXPECT_EQ(manager.ApplyFilter(&m), row.second) << "'" << row.first << "'";
    }
}

}  // namespace

#include <algorithm>

#include "CollectionSupport.h"

namespace collection {
namespace {

const char kEmptyInventory[] = "<SVMInventory/>";

class ModuleSelectionSerial : public CollectionTest {
protected:
    // A module that notes its name in ran.log and reports nothing.
    Module Marking(const std::string& name) const {
        Module module;
        module.name = name;
        module.script = Append(dir.PathOf("ran.log"), name) + Emit(kEmptyInventory);
        return module;
    }
    // A module that notes its start and end around a short sleep.
    Module Timed(const std::string& name) const {
        Module module;
        module.name = name;
        module.script = Append(dir.PathOf("ran.log"), "start " + name) + "sleep 0.3\n" +
                        Append(dir.PathOf("ran.log"), "end " + name) + Emit(kEmptyInventory);
        return module;
    }
    std::vector<std::string> Ran() const { return Lines("ran.log"); }
    std::vector<std::string> RanSorted() const {
        std::vector<std::string> lines = Ran();
        std::sort(lines.begin(), lines.end());
        return lines;
    }
    void Forget() const { ::unlink(dir.PathOf("ran.log").c_str()); }
};

TEST_F(ModuleSelectionSerial, DisableSkipsGenerationModulesButNeverInstallSteps) {
    Config config;
    Module pre = Marking("pre");
    pre.guid = "0e5d1c2a-0000-4000-8000-000000000001";
    Module post = Marking("post");
    post.guid = "0e5d1c2a-0000-4000-8000-000000000002";
    Module a = Marking("a");
    a.guid = "0e5d1c2a-0000-4000-8000-00000000000a";
    Module b = Marking("b");
    b.guid = "0e5d1c2a-0000-4000-8000-00000000000b";
    Module c = Marking("c");
    c.guid = "0E5D1C2A-0000-4000-8000-00000000000C";
    config.preInstall = {pre};
    config.postInstall = {post};
    config.generations = {{"Generic", {a, b, c}}};
    Install(config);

    // Repeated words accumulate; the GUID comparison is case-sensitive, so c still runs.
    const e2e::ProcessResult result = Run({"-disable=" + pre.guid + "," + a.guid, "-d=" + post.guid,
                                           "-disable=0e5d1c2a-0000-4000-8000-00000000000c"});
    ASSERT_TRUE(result.exited) << result.err;
    EXPECT_EQ(result.exitStatus, 0) << result.err;
    EXPECT_EQ(Ran().front(), "pre");
    EXPECT_EQ(Ran().back(), "post");
    EXPECT_EQ(RanSorted(), (std::vector<std::string>{"b", "c", "post", "pre"}));
}

TEST_F(ModuleSelectionSerial, CompTypeKeepsMatchingAndNaModulesAndDropsUntypedOnes) {
    Config config;
    Module prep = Marking("prep");
    prep.compType = "APP";
    config.preInstall = {prep};
    std::vector<Module> modules;
    for (const auto& entry : std::vector<std::pair<std::string, std::string>>{{"na", "NA"},
                                                                              {"untyped", ""},
                                                                              {"frmwbios", "FRMW, BIOS"},
                                                                              {"drvr", "DRVR"},
                                                                              {"bios", "BIOS"},
                                                                              {"lower", "bios"}}) {
        Module module = Marking(entry.first);
        module.compType = entry.second;
        modules.push_back(module);
    }
    config.generations = {{"Generic", modules}};
    Install(config);

    const struct {
        std::vector<std::string> args;
        std::vector<std::string> ran;  // sorted
    } rows[] = {
        {{}, {"bios", "drvr", "frmwbios", "lower", "na", "prep", "untyped"}},
        {{"-comptype=BIOS"}, {"bios", "frmwbios", "na", "prep"}},
        {{"-comptype=DRVR,APAC"}, {"drvr", "na", "prep"}},
        {{"-comptype=FRMW", "-comptype=DRVR"}, {"drvr", "frmwbios", "na", "prep"}},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(::testing::PrintToString(row.args));
        Forget();
        const e2e::ProcessResult result = Run(row.args);
        ASSERT_TRUE(result.exited) << result.err;
        EXPECT_EQ(result.exitStatus, 0) << result.err;
        EXPECT_EQ(RanSorted(), row.ran);
    }
}

TEST_F(ModuleSelectionSerial, SerializeRunsEveryGenerationModuleAloneInFileOrder) {
    Config config;
    Module second = Timed("s2");
    second.priority = "1";  // ignored when serialized
    config.generations = {{"GenPre12G", {Timed("s1"), second}}, {"Generic", {Timed("s3")}}};
    Install(config);

    const e2e::ProcessResult result = Run({"-serialize=yes"});
    ASSERT_TRUE(result.exited) << result.err;
    EXPECT_EQ(Ran(),
              (std::vector<std::string>{"start s1", "end s1", "start s2", "end s2", "start s3", "end s3"}));
}

TEST_F(ModuleSelectionSerial, ParallelModulesOverlapWhileSerialOnesRunInTurn) {
    Config config;
    Module p1 = Timed("p1");
    Module f1 = Timed("f1");
    f1.parallel = "false";
    Module f2 = Timed("f2");
    f2.parallel = "false";
    f2.priority = "1";  // "false" wins over the priority mark
    config.generations = {{"Generic", {f1, p1, f2}}};
    Install(config);

    for (const std::vector<std::string>& args : {std::vector<std::string>{}, {"-serialize=no"}}) {
        SCOPED_TRACE(::testing::PrintToString(args));
        Forget();
        const e2e::ProcessResult result = Run(args);
        ASSERT_TRUE(result.exited) << result.err;
        // The two serial modules never overlap, and run in file order.
        std::vector<std::string> f;
        for (const std::string& line : Ran())
            if (line.find(" f") != std::string::npos) f.push_back(line);
        EXPECT_EQ(f, (std::vector<std::string>{"start f1", "end f1", "start f2", "end f2"}));
        // The parallel module runs beside them: it starts before the first one ends.
        const std::vector<std::string> ran = Ran();
        const auto startP1 = std::find(ran.begin(), ran.end(), "start p1");
        const auto endF1 = std::find(ran.begin(), ran.end(), "end f1");
        ASSERT_NE(startP1, ran.end());
        EXPECT_LT(startP1 - ran.begin(), endF1 - ran.begin());
    }
}

TEST_F(ModuleSelectionSerial, GenerationNodesFollowTheDetectedGeneration) {
    const std::vector<std::string> nodes = {"GenPre12G",    "GenTwelveG",  "GenThirteenG",
                                            "GenFourteenG", "GenFifteenG", "GenSixteenG",
                                            "Generic",      "GenFailure",  "generic"};
    Config config;
    for (const std::string& node : nodes) {
        std::vector<Module> modules = {Marking(node)};
        // A module listed under two selected nodes runs twice.
        if (node == "Generic") modules.push_back(Marking("GenPre12G"));
        config.generations.push_back({node, modules});
    }
    Install(config);

    const std::vector<std::string> everyGeneration = {"GenFifteenG", "GenFourteenG", "GenPre12G",
                                                      "GenPre12G",   "GenSixteenG",  "GenThirteenG",
                                                      "GenTwelveG",  "Generic"};
    const struct {
        const char* name;
        bool simulator;
        std::map<std::string, std::string> environment;
        std::vector<std::string> ran;  // sorted
    } rows[] = {
        {"no management controller", false, {}, everyGeneration},
        {"generation 0x30",
         true,
         {},
         {"GenFourteenG", "GenPre12G", "GenPre12G", "GenThirteenG", "GenTwelveG", "Generic"}},
        {"generation 0x52", true, {{"IPMISIM_GEN", "0x52"}}, everyGeneration},
        {"generation 0x16",
         true,
         {{"IPMISIM_GEN", "0x16"}},
         {"GenPre12G", "GenPre12G", "GenThirteenG", "GenTwelveG", "Generic"}},
        {"completion code 0xC1", true, {{"IPMISIM_CC", "0xC1"}}, {"GenPre12G", "GenPre12G", "Generic"}},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        Forget();
        const e2e::ProcessResult result = row.simulator ? RunWithSimulator({}, row.environment) : Run({});
        ASSERT_TRUE(result.exited) << result.err;
        EXPECT_EQ(result.exitStatus, 0) << result.err;
        EXPECT_EQ(RanSorted(), row.ran);
    }
}

TEST_F(ModuleSelectionSerial, InstallStepsRunInOrderAroundTheInventoryModulesAndReportNothing) {
    const std::string device =
        "<SVMInventory><Device componentID=\"7\" display=\"D\">"
        "<Application componentType=\"FRMW\" version=\"1\" display=\"A\"/></Device></SVMInventory>";
    Config config;
    Module pre1 = Marking("pre1");
    pre1.script = "sleep 0.2\n" + pre1.script + Emit(device);
    Module pre2 = Marking("pre2");
    pre2.type = "lib";  // install steps run whatever their type
    Module post1 = Marking("post1");
    post1.script = "sleep 0.1\n" + post1.script + Emit(device);
    Module g1 = Marking("g1");
    g1.script = "sleep 0.2\n" + g1.script;  // post-install waits for it
    Module library = Marking("library");
    library.type = "lib";  // accepted, but never started
    config.preInstall = {pre1, pre2};
    config.postInstall = {post1, Marking("post2")};
    config.generations = {{"Generic", {g1, library, Marking("g2")}}};
    Install(config);

    const e2e::ProcessResult result = Run({});
    ASSERT_TRUE(result.exited) << result.err;
    EXPECT_EQ(result.exitStatus, 0) << result.err;
    EXPECT_EQ(NormalizeTimestamps(result.out), InventoryXml(""));
    std::vector<std::string> ran = Ran();
    ASSERT_EQ(ran.size(), 6u);
    std::sort(ran.begin() + 2, ran.begin() + 4);
    EXPECT_EQ(ran, (std::vector<std::string>{"pre1", "pre2", "g1", "g2", "post1", "post2"}));
}

}  // namespace
}  // namespace collection

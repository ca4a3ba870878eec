#include <algorithm>
#include <regex>

#include "CollectionSupport.h"

namespace collection {
namespace {

class ModuleSelectionTest : public CollectionTest {
protected:
    // Notes its name in ran.log and reports an empty inventory.
    Module Marking(const std::string& name, const std::string& compType = "NA") const {
        return Module{name, Note(name) + Emit("<SVMInventory/>"), compType};
    }
    // Notes its start and end around a short sleep.
    Module Timed(const std::string& name) const {
        return Module{name, Note("start " + name) + "sleep 0.3\n" + Note("end " + name)};
    }
};

TEST_F(ModuleSelectionTest, DisableSkipsGenerationModulesButNeverInstallSteps) {
    const std::string guid = "0e5d1c2a-0000-4000-8000-0000000000";
    Module pre = Marking("pre"), post = Marking("post"), a = Marking("a"), c = Marking("c");
    pre.guid = guid + "01", post.guid = guid + "02", a.guid = guid + "0a";
    c.guid = "0E5D1C2A-0000-4000-8000-00000000000C";
    Config config = GenericOnly({a, Marking("b"), c});
    config.preInstall = {pre};
    config.postInstall = {post};
    Install(config);

    // Repeated options accumulate; GUIDs compare case-sensitively, so c still runs.
    const Args args = {"-disable=" + guid + "01," + guid + "0a", "-d=" + guid + "02",
                       "-disable=" + guid + "0c"};
    EXPECT_EQ(Run(args).exitStatus, 0);
    ASSERT_EQ(Ran().size(), 4u);
    EXPECT_EQ(Ran().front() + Ran().back(), "prepost");
    EXPECT_EQ(Ran(true), (Args{"b", "c", "post", "pre"}));
}

TEST_F(ModuleSelectionTest, CompTypeKeepsMatchingAndNaModulesAndDropsUntypedOnes) {
    Config config = GenericOnly({Marking("na"), Marking("untyped", ""), Marking("frmwbios", "FRMW, BIOS"),
                                 Marking("drvr", "DRVR"), Marking("bios", "BIOS"), Marking("lower", "bios")});
    config.preInstall = {Marking("prep", "APP")};
    Install(config);
    const struct {
        Args args;
        Args ran;  // sorted
    } rows[] = {
        {{}, {"bios", "drvr", "frmwbios", "lower", "na", "prep", "untyped"}},
        {{"-comptype=BIOS"}, {"bios", "frmwbios", "na", "prep"}},
        {{"-comptype=FRMW", "-comptype=DRVR,APAC"}, {"drvr", "frmwbios", "na", "prep"}},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(::testing::PrintToString(row.args));
        ForgetRan();
        EXPECT_EQ(Run(row.args).exitStatus, 0);
        EXPECT_EQ(Ran(true), row.ran);
    }
}

TEST_F(ModuleSelectionTest, SerializeRunsModulesAloneInFileOrderElseOnlySerialOnesWait) {
    Module f1 = Timed("f1"), p1 = Timed("p1"), f2 = Timed("f2");
    f1.parallel = f2.parallel = "false";
    p1.priority = f2.priority = "1";  // "false" wins over the priority mark, and serializing over both
    Config config;
    config.generations = {{"GenPre12G", {f1, p1, f2}}, {"Generic", {Timed("s")}}};
    Install(config);

    ForgetRan();
    Run({"-serialize=yes"});
    EXPECT_EQ(Ran(),
              (Args{"start f1", "end f1", "start p1", "end p1", "start f2", "end f2", "start s", "end s"}));
    for (const Args& args : {Args{}, Args{"-serialize=no"}}) {
        SCOPED_TRACE(::testing::PrintToString(args));
        ForgetRan();
        Run(args);
        const Args ran = Ran();
        Args serial;
        for (const std::string& line : ran)
            if (line.find(" f") != std::string::npos) serial.push_back(line);
        EXPECT_EQ(serial, (Args{"start f1", "end f1", "start f2", "end f2"}));
        auto at = [&ran](const char* line) { return std::find(ran.begin(), ran.end(), line) - ran.begin(); };
        EXPECT_LT(at("start p1"), at("end f1"));  // the parallel module runs beside the serial ones
    }
}

TEST_F(ModuleSelectionTest, GenerationNodesFollowTheDetectedGeneration) {
    Config config;
    for (const char* node : {"GenPre12G", "GenTwelveG", "GenThirteenG", "GenFourteenG", "GenFifteenG",
                             "GenSixteenG", "Generic", "GenFailure", "generic"})
        config.generations.push_back({node, {Marking(node)}});
    Install(config);
    const struct {
        const char* name;
        std::map<std::string, std::string> environment;
        Args ran;  // sorted
    } rows[] = {
        // clang-format off
        {"no management controller", {{"IPMISIM_MODULES", ""}, {"IPMISIM_MODPROBE_STATUS", "1"}},
         {"GenFifteenG", "GenFourteenG", "GenPre12G", "GenSixteenG", "GenThirteenG", "GenTwelveG",
          "Generic"}},
        {"generation 0x30", {}, {"GenFourteenG", "GenPre12G", "GenThirteenG", "GenTwelveG", "Generic"}},
        {"completion code 0xC1", {{"IPMISIM_CC", "0xC1"}}, {"GenPre12G", "Generic"}},
        // clang-format on
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        ForgetRan();
        EXPECT_EQ(Run({}, row.environment).exitStatus, 0);
        EXPECT_EQ(Ran(true), row.ran);
    }
}

// What the real device calls and module tools see of one detection, with the
// drivers already loaded: one request, the three checks, nothing loaded or
// unloaded; the marker file turns the library's log on.
TEST_F(ModuleSelectionTest, TheGenerationRequestReachesTheDeviceAsSentAndLoadedDriversStayLoaded) {
    Install(GenericOnly({Marking("g")}));
    const std::string log = dir.PathOf("sim.log");
    for (bool marker : {false, true}) {
        SCOPED_TRACE(marker ? "marker file" : "no marker file");
        if (marker) dir.WriteFile("kpxdebuglog", "");
        dir.WriteFile("sim.log", "");
        const ProcessResult result = Run({}, {{"IPMISIM_LOG", log}, {"IPMISIM_GEN", "0x30"}});
        EXPECT_EQ(result.exitStatus, 0);
        EXPECT_EQ(result.err, "");
        const std::string lines = dir.ReadFile("sim.log");
        for (const char* pattern :
             {"(^|\\n)open /dev/ipmi0 rdwr=1 cloexec=1\\n",
              "\\nsend netfn=0x30 cmd=0xbd data_len=0 data= msgid=[0-9]+ addr_type=0x0c channel=0x0f lun=0 "
              "addr_len=8\\nrecv msgid=[^\\n]*\\nclose\\n"})
            EXPECT_TRUE(std::regex_search(lines, std::regex(pattern))) << pattern << "\n" << lines;
        std::size_t checks = 0;
        for (std::size_t at = lines.find("shell lsmod"); at != std::string::npos;
             at = lines.find("shell lsmod", at + 1))
            ++checks;
        EXPECT_EQ(checks, 3u);
        EXPECT_EQ(lines.find("shell modprobe") + lines.find("shell rmmod"), 2 * std::string::npos) << lines;
        EXPECT_EQ(dir.Exists("bqmipmi_internal.log"), marker);
        if (marker) {
            EXPECT_NE(
                dir.ReadFile("bqmipmi_internal.log")
                    .find("IPMI Request :  0x30 0xbd      IPMI Response :   0x31 0xbd 0x00 0x00 0x00 0x00 "
                          "0x00 0x00 0x30\n"),
                std::string::npos);
        }
    }
}

TEST_F(ModuleSelectionTest, InstallStepsRunAroundTheInventoryModulesAndReportNothing) {
    Config config = GenericOnly({Marking("g1"), Marking("library"), Marking("g2")});
    config.generations[0].second[0].script.insert(0, "sleep 0.2\n");  // post-install waits for it
    config.generations[0].second[1].type = "lib";                     // accepted, never started
    config.preInstall = {Marking("pre1"), Marking("pre2")};
    config.preInstall[0].script = "sleep 0.2\n" + Note("pre1") + Emit(DeviceDoc("7"));
    config.preInstall[1].type = "lib";  // install steps run whatever their type
    config.postInstall = {Marking("post1"), Marking("post2")};
    config.postInstall[0].script = "sleep 0.1\n" + Note("post1") + Emit(DeviceDoc("8"));
    Install(config);

    ExpectResult(Run({}), 0, InventoryXml(""));
    Args ran = Ran();
    ASSERT_EQ(ran.size(), 6u);
    std::sort(ran.begin() + 2, ran.begin() + 4);
    EXPECT_EQ(ran, (Args{"pre1", "pre2", "g1", "g2", "post1", "post2"}));
}

}  // namespace
}  // namespace collection

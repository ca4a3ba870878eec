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
};

// The option rules are the module manager's table and the phases the
// invoker's; this is their way from the command line into a run.
TEST_F(ModuleSelectionTest, SelectionOptionsReachTheRun) {
    const std::string guid = "0e5d1c2a-0000-4000-8000-0000000000";
    Module pre = Marking("pre"), post = Marking("post"), a = Marking("a", "BIOS"), b = Marking("b", "DRVR"),
           c = Marking("c");
    a.script.insert(0, "sleep 0.2\n");  // run side by side, c ends first and a last
    b.script.insert(0, "sleep 0.1\n");
    pre.guid = guid + "01", post.guid = guid + "02", a.guid = guid + "0a";
    c.guid = "0E5D1C2A-0000-4000-8000-00000000000C";
    Config config = GenericOnly({a, b, c});
    config.preInstall = {pre};
    config.postInstall = {post};
    Install(config);
    const struct {
        Args args;
        Args ran;  // sorted unless ordered
        bool ordered;
    } rows[] = {
        {{}, {"a", "b", "c", "post", "pre"}, false},
        // Repeated options accumulate; install steps are never disabled; GUIDs
        // compare case-sensitively, so c still runs.
        {{"-disable=" + guid + "01," + guid + "0a", "-d=" + guid + "02", "-disable=" + guid + "0c"},
         {"b", "c", "post", "pre"},
         false},
        {{"-comptype=BIOS"}, {"a", "c", "post", "pre"}, false},
        {{"-serialize=yes"}, {"pre", "a", "b", "c", "post"}, true},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(::testing::PrintToString(row.args));
        ForgetRan();
        ExpectResult(Run(row.args), 0, InventoryXml(""));
        EXPECT_EQ(Ran(!row.ordered), row.ran);
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

}  // namespace
}  // namespace collection

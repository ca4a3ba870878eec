#include "DriverManager.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "IPMITestSupport.h"

namespace {

typedef std::vector<std::string> Texts;

std::string Check(const char* name) { return std::string("lsmod  | grep ") + name + " > /dev/null 2>&1 "; }
std::string Load(const char* name) { return std::string("modprobe ") + name + " > /dev/null 2>&1 "; }
std::string Unload(const char* name) { return std::string("rmmod ") + name + " > /dev/null 2>&1 "; }
const Texts kChecks = {Check("ipmi_msghandler"), Check("ipmi_devintf"), Check("ipmi_si")};
const Texts kUnloads = {Unload("ipmi_si"), Unload("ipmi_devintf"), Unload("ipmi_msghandler")};

class DriverManagerTest : public ::testing::Test {
protected:
    FakePlatform platform;
    FakeOSProbe linuxHost{nullptr, "Linux"};
    DriverManager manager{&linuxHost, kIPMIDriverUnloadPauseMs, platform};
};

TEST_F(DriverManagerTest, LoadFailsOnlyWhenEveryModuleFailsToLoad) {
    platform.statuses = {{"grep ipmi_si", 256}, {"modprobe ipmi_si", 256}};
    EXPECT_EQ(manager.IsIPMIDriverAvailable(), 0);
    EXPECT_EQ(platform.commands, Texts({kChecks[0], kChecks[1], kChecks[2], Load("ipmi_si")}));
    EXPECT_TRUE(manager.IsDriverReady() && manager.IsLoadAttempted() && !manager.IsSiLoaded());
    FakePlatform noTools;
    noTools.defaultStatus = FakePlatform::kNotFound;
    DriverManager failing(&linuxHost, kIPMIDriverUnloadPauseMs, noTools);
    EXPECT_EQ(failing.IsIPMIDriverAvailable(), 1);
    EXPECT_EQ(noTools.commands, Texts({kChecks[0], kChecks[1], kChecks[2], Load("ipmi_msghandler"),
                                       Load("ipmi_devintf"), Load("ipmi_si")}));
    EXPECT_TRUE(!failing.IsDriverReady() && noTools.sleeps.empty());
}

TEST_F(DriverManagerTest, ReleaseUnloadsWhatWasMissingInReverseOrderThreeSecondsApart) {
    const struct {
        std::vector<std::pair<std::string, int>> statuses;
        Texts unloads;
    } cases[] = {{{}, {}},
                 {{{"lsmod", 256}}, kUnloads},
                 {{{"lsmod", 256}, {"modprobe ipmi_si", 256}}, kUnloads},  // a failed load is unloaded too
                 {{{"grep ipmi_devintf", 256}}, {Unload("ipmi_devintf")}}};
    for (const auto& c : cases) {
        FakePlatform shell;
        shell.statuses = c.statuses;
        DriverManager loader(&linuxHost, kIPMIDriverUnloadPauseMs, shell);
        ASSERT_EQ(loader.IsIPMIDriverAvailable() + loader.IsIPMIDriverAvailable(), 0);
        EXPECT_EQ(shell.commands.size(), 3 + c.unloads.size());  // checked once; each missing one loaded
        shell.events.clear();
        EXPECT_EQ(loader.ReleaseIPMIDriver() + loader.ReleaseIPMIDriver(), 0);  // the second has nothing left
        Texts expected;
        if (!c.unloads.empty()) expected.push_back("read lsmod");
        for (const std::string& unload : c.unloads) expected.insert(expected.end(), {"sleep 3000", unload});
        EXPECT_EQ(shell.events, expected);
    }
}

TEST_F(DriverManagerTest, ModulesThatCameWithTheRunAndHoldADriverGoFirstWithoutPause) {
    const char* const heading = "Module                  Size  Used by\n";
    const struct {
        const char* state;      // what lsmod shows at release
        bool devIntfWasLoaded;  // found loaded before the run
        Texts holders;          // unloaded before the drivers, in this order
    } cases[] = {
        // acpi_ipmi arrived with the drivers and holds two of them; ipmi_watchdog
        // came the same way; an unrelated module is left alone.
        {"ipmi_si 61440 1 acpi_ipmi\nacpi_ipmi 20480 0\nipmi_devintf 20480 0\n"
         "ipmi_msghandler 77824 4 ipmi_devintf,ipmi_si,acpi_ipmi,ipmi_watchdog,\nipmi_watchdog 32768 0 -\n"
         "e1000e 290816 0\n",
         false,
         {Unload("ipmi_watchdog"), Unload("acpi_ipmi")}},
        // A holder of a holder goes before it.
        {"ipmi_msghandler 77824 2 ipmi_si,ipmi_ssif\nipmi_ssif 40960 1 ssif_extra\nssif_extra 4096 0\n",
         false,
         {Unload("ssif_extra"), Unload("ipmi_ssif")}},
        // Nothing new holds them.
        {"ipmi_si 61440 0\nipmi_msghandler 77824 2 ipmi_devintf,ipmi_si\n", false, {}},
        // ipmi_devintf was there before: its holders are not this run's doing.
        {"ipmi_devintf 20480 1 someone_else\nipmi_msghandler 77824 1 ipmi_devintf [permanent]\n", true, {}},
    };
    for (const auto& c : cases) {
        FakePlatform shell;
        shell.statuses = {{"lsmod", 256}};
        if (c.devIntfWasLoaded) shell.statuses.insert(shell.statuses.begin(), {"grep ipmi_devintf", 0});
        shell.lsmodOutput = std::string(heading) + c.state;
        DriverManager loader(&linuxHost, kIPMIDriverUnloadPauseMs, shell);
        ASSERT_EQ(loader.IsIPMIDriverAvailable(), 0);
        shell.events.clear();
        loader.ReleaseIPMIDriver();
        Texts expected = {"read lsmod"};
        expected.insert(expected.end(), c.holders.begin(), c.holders.end());
        for (const char* driver : {"ipmi_si", "ipmi_devintf", "ipmi_msghandler"}) {
            if (c.devIntfWasLoaded && std::string(driver) == "ipmi_devintf") continue;
            expected.insert(expected.end(), {"sleep 3000", Unload(driver)});
        }
        EXPECT_EQ(shell.events, expected) << c.state;
    }
    // No listing (no lsmod): the drivers are still unloaded as always.
    FakePlatform noListing;
    noListing.statuses = {{"lsmod", 256}};
    noListing.lsmodStatus = 127 << 8;
    noListing.lsmodOutput = std::string(heading) + "ipmi_si 1 1 acpi_ipmi\n";
    DriverManager loader(&linuxHost, 0, noListing);
    loader.IsIPMIDriverAvailable();
    noListing.commands.clear();
    loader.ReleaseIPMIDriver();
    EXPECT_EQ(noListing.commands, kUnloads);
    EXPECT_EQ(noListing.sleeps, (std::vector<unsigned long>{0, 0, 0}));  // the pause the caller chose
}

TEST_F(DriverManagerTest, EsxAndEsxiRunNoShellCommandButReleaseSkipsOnlyEsxi) {
    FakeOSProbe esx("VMware ESX 4.1.0 (Kandinsky)", "Linux"), esxi(nullptr, "VMkernel");
    DriverManager onEsx(&esx, 0, platform), onEsxi(&esxi, 0, platform);
    for (DriverManager* host : {&onEsx, &onEsxi}) {
        EXPECT_EQ(host->IsIPMIDriverAvailable() + host->IsIPMIDriverAvailable() + host->ReleaseIPMIDriver(),
                  0);
        EXPECT_FALSE(host->IsDriverReady());
    }
    EXPECT_TRUE(platform.events.empty());
    for (DriverManager* host : {&onEsxi, &onEsx}) host->LoadIPMIDriver();
    platform.commands.clear();
    for (DriverManager* host : {&onEsxi, &onEsx}) host->ReleaseIPMIDriver();
    EXPECT_EQ(platform.commands, kUnloads);
}

TEST_F(DriverManagerTest, SingleCommandsAnswerTheRawStatusAndKeepShellComplaintsOffStderr) {
    platform.defaultStatus = 0x7F00;
    platform.complaint = "sh: 1: lsmod: not found\n";
    const BQMString si("ipmi_si", BQMString::BQM_ENCODING_UTF8);
    testing::internal::CaptureStderr();
    EXPECT_EQ(manager.IsDriverAvailable(si), 0x7F00);
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "");  // only the check silences the shell
    platform.complaint.clear();
    EXPECT_EQ(manager.LoadDriver(si) + manager.ReleaseDriver(si), 2 * 0x7F00);
    EXPECT_EQ(platform.events, Texts({Check("ipmi_si"), Load("ipmi_si"), "sleep 3000", Unload("ipmi_si")}));
}

}  // namespace

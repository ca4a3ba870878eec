#include "DriverManager.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "IPMITestSupport.h"

namespace {

typedef std::vector<std::string> Texts;

std::string Check(const std::string& name) { return "lsmod  | grep " + name + " > /dev/null 2>&1 "; }
std::string Load(const std::string& name) { return "modprobe " + name + " > /dev/null 2>&1 "; }
std::string Unload(const std::string& name) { return "rmmod " + name + " > /dev/null 2>&1 "; }
const Texts kUnloads = {Unload("ipmi_si"), Unload("ipmi_devintf"), Unload("ipmi_msghandler")};

class DriverManagerTest : public ::testing::Test {
protected:
    FakePlatform platform;
    FakeOSProbe linuxHost{nullptr, "Linux"};
    DriverManager manager{&linuxHost, kIPMIDriverUnloadPauseMs, platform};
};

// One module that loads is enough (see the release table); failing all of them fails.
TEST_F(DriverManagerTest, EveryModuleFailingToLoadFailsTheCheck) {
    platform.defaultStatus = FakePlatform::kNotFound;
    EXPECT_EQ(manager.IsIPMIDriverAvailable(), 1);
    EXPECT_EQ(platform.commands, Texts({Check("ipmi_msghandler"), Check("ipmi_devintf"), Check("ipmi_si"),
                                        Load("ipmi_msghandler"), Load("ipmi_devintf"), Load("ipmi_si")}));
    EXPECT_TRUE(!manager.IsDriverReady() && platform.sleeps.empty());
}

// What the run did not find loaded goes again at release: first any module that
// came with the run and holds a driver (a holder's holder before it, no pause),
// then the drivers in reverse order, each after the pause.
TEST_F(DriverManagerTest, ReleaseUnloadsWhatTheRunLoadedAndWhatCameWithIt) {
    const Texts all = {"ipmi_si", "ipmi_devintf", "ipmi_msghandler"};
    const std::pair<std::string, int> noneLoaded = {"lsmod", 256};
    const struct {
        std::vector<std::pair<std::string, int>> statuses;
        const char* listing;     // what lsmod shows at release, after its heading; null: lsmod fails
        Texts holders, drivers;  // unloaded, in this order
    } cases[] = {
        {{}, "", {}, {}},  // all there before: not even a listing is read
        {{noneLoaded}, "", {}, all},
        {{noneLoaded, {"modprobe ipmi_si", 256}}, "", {}, all},  // a failed load is not fatal; unloaded too
        {{{"grep ipmi_devintf", 256}}, "", {}, {"ipmi_devintf"}},
        // acpi_ipmi arrived with the drivers and holds two of them; ipmi_watchdog
        // came the same way; an unrelated module is left alone.
        {{noneLoaded},
         "ipmi_si 61440 1 acpi_ipmi\nacpi_ipmi 20480 0\nipmi_devintf 20480 0\n"
         "ipmi_msghandler 77824 4 ipmi_devintf,ipmi_si,acpi_ipmi,ipmi_watchdog,\nipmi_watchdog 32768 0 -\n"
         "e1000e 290816 0\n",
         {"ipmi_watchdog", "acpi_ipmi"},
         all},
        {{noneLoaded},
         "ipmi_msghandler 77824 2 ipmi_si,ipmi_ssif\nipmi_ssif 40960 1 ssif_extra\nssif_extra 4096 0\n",
         {"ssif_extra", "ipmi_ssif"},
         all},
        {{noneLoaded}, "ipmi_si 61440 0\nipmi_msghandler 77824 2 ipmi_devintf,ipmi_si\n", {}, all},
        // ipmi_devintf was there before: its holders are not this run's doing.
        {{{"grep ipmi_devintf", 0}, noneLoaded},
         "ipmi_devintf 20480 1 someone_else\nipmi_msghandler 77824 1 ipmi_devintf,[permanent]\n",
         {},
         {"ipmi_si", "ipmi_msghandler"}},
        {{noneLoaded}, nullptr, {}, all},  // no listing: its holder is unknown, the drivers still go
    };
    for (const auto& c : cases) {
        FakePlatform shell;
        shell.statuses = c.statuses;
        shell.lsmodOutput =
            std::string("Module  Size  Used by\n") + (c.listing ? c.listing : "ipmi_si 1 1 acpi_ipmi\n");
        shell.lsmodStatus = c.listing ? 0 : FakePlatform::kNotFound;
        DriverManager loader(&linuxHost, kIPMIDriverUnloadPauseMs, shell);
        ASSERT_EQ(loader.IsIPMIDriverAvailable() + loader.IsIPMIDriverAvailable(), 0);
        EXPECT_EQ(shell.commands.size(), 3 + c.drivers.size());  // checked once; each missing one loaded
        shell.events.clear();
        EXPECT_EQ(loader.ReleaseIPMIDriver() + loader.ReleaseIPMIDriver(), 0);  // the second has nothing left
        Texts expected;
        if (!c.drivers.empty()) expected.push_back("read lsmod");
        for (const std::string& holder : c.holders) expected.push_back(Unload(holder));
        for (const std::string& driver : c.drivers)
            expected.insert(expected.end(), {"sleep 3000", Unload(driver)});
        EXPECT_EQ(shell.events, expected) << (c.listing ? c.listing : "no listing");
    }
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

// The check's redirection covers only grep: a missing lsmod must not complain on our standard error.
TEST_F(DriverManagerTest, SingleCommandsAnswerTheRawStatusAndOnlyTheCheckIsQuiet) {
    platform.defaultStatus = 0x7F00;
    const BQMString si("ipmi_si", BQMString::BQM_ENCODING_UTF8);
    EXPECT_EQ(manager.IsDriverAvailable(si) + manager.LoadDriver(si) + manager.ReleaseDriver(si), 3 * 0x7F00);
    EXPECT_EQ(platform.events, Texts({Check("ipmi_si"), Load("ipmi_si"), "sleep 3000", Unload("ipmi_si")}));
    EXPECT_EQ(platform.quiet, (std::vector<bool>{true, false, false}));
}

}  // namespace

#include "DriverManager.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <string>
#include <vector>

#include "FakeOSProbe.h"
#include "FakePlatform.h"

namespace {

const std::string kCheckMsgHandler = "lsmod  | grep ipmi_msghandler > /dev/null 2>&1 ";
const std::string kCheckDevIntf = "lsmod  | grep ipmi_devintf > /dev/null 2>&1 ";
const std::string kCheckSi = "lsmod  | grep ipmi_si > /dev/null 2>&1 ";
const std::string kLoadMsgHandler = "modprobe ipmi_msghandler > /dev/null 2>&1 ";
const std::string kLoadDevIntf = "modprobe ipmi_devintf > /dev/null 2>&1 ";
const std::string kLoadSi = "modprobe ipmi_si > /dev/null 2>&1 ";
const std::string kUnloadMsgHandler = "rmmod ipmi_msghandler > /dev/null 2>&1 ";
const std::string kUnloadDevIntf = "rmmod ipmi_devintf > /dev/null 2>&1 ";
const std::string kUnloadSi = "rmmod ipmi_si > /dev/null 2>&1 ";

class DriverManagerTest : public ::testing::Test {
  protected:
    FakePlatform platform;
    FakeOSProbe linuxHost = FakeOSProbe::Linux();
};

TEST_F(DriverManagerTest, AllModulesPresentLoadsAndUnloadsNothing) {
    DriverManager manager(&linuxHost);
    EXPECT_EQ(0, manager.IsIPMIDriverAvailable());
    EXPECT_EQ((std::vector<std::string>{kCheckMsgHandler, kCheckDevIntf, kCheckSi}), platform.commands);
    EXPECT_TRUE(manager.IsDriverReady());
    EXPECT_FALSE(manager.IsLoadAttempted());

    EXPECT_EQ(0, manager.ReleaseIPMIDriver());
    EXPECT_EQ(3u, platform.commands.size());
    EXPECT_TRUE(platform.sleeps.empty());
}

TEST_F(DriverManagerTest, ReadyDriversAreNotCheckedAgain) {
    DriverManager manager(&linuxHost);
    ASSERT_EQ(0, manager.IsIPMIDriverAvailable());
    ASSERT_EQ(0, manager.IsIPMIDriverAvailable());
    EXPECT_EQ(3u, platform.commands.size());
}

TEST_F(DriverManagerTest, OnlyMissingSiWhoseLoadFailsStillCountsAsUsable) {
    platform.statuses = {{"grep ipmi_si", 256}, {"modprobe ipmi_si", 256}};
    DriverManager manager(&linuxHost);
    EXPECT_EQ(0, manager.IsIPMIDriverAvailable());
    EXPECT_EQ((std::vector<std::string>{kCheckMsgHandler, kCheckDevIntf, kCheckSi, kLoadSi}),
              platform.commands);
    EXPECT_TRUE(manager.IsDriverReady());
    EXPECT_TRUE(manager.IsLoadAttempted());
    EXPECT_TRUE(manager.IsMsgHandlerLoaded());
    EXPECT_TRUE(manager.IsDevIntfLoaded());
    EXPECT_FALSE(manager.IsSiLoaded());
}

TEST_F(DriverManagerTest, NoModuleToolsMeansFailureWithoutAnyPause) {
    platform.defaultStatus = FakePlatform::kNotFound;
    DriverManager manager(&linuxHost);
    EXPECT_EQ(1, manager.IsIPMIDriverAvailable());
    EXPECT_EQ((std::vector<std::string>{kCheckMsgHandler, kCheckDevIntf, kCheckSi, kLoadMsgHandler,
                                        kLoadDevIntf, kLoadSi}),
              platform.commands);
    EXPECT_FALSE(manager.IsDriverReady());
    EXPECT_TRUE(platform.sleeps.empty());
}

TEST_F(DriverManagerTest, ReleaseAfterLoadRemovesLoadedModulesInReverseOrderThreeSecondsApart) {
    platform.statuses = {{"lsmod", 256}};
    DriverManager manager(&linuxHost);
    ASSERT_EQ(0, manager.IsIPMIDriverAvailable());
    platform.events.clear();

    EXPECT_EQ(0, manager.ReleaseIPMIDriver());
    EXPECT_EQ((std::vector<std::string>{"sleep 3000", kUnloadSi, "sleep 3000", kUnloadDevIntf, "sleep 3000",
                                        kUnloadMsgHandler}),
              platform.events);

    // What was loaded is gone: a second release removes nothing.
    platform.events.clear();
    EXPECT_EQ(0, manager.ReleaseIPMIDriver());
    EXPECT_TRUE(platform.events.empty());
}

TEST_F(DriverManagerTest, ReleaseLeavesModulesThatWereAlreadyLoaded) {
    platform.statuses = {{"grep ipmi_devintf", 256}};
    DriverManager manager(&linuxHost);
    ASSERT_EQ(0, manager.IsIPMIDriverAvailable());
    platform.events.clear();
    manager.ReleaseIPMIDriver();
    EXPECT_EQ((std::vector<std::string>{"sleep 3000", kUnloadDevIntf}), platform.events);
}

TEST_F(DriverManagerTest, ModuleWhoseLoadFailedIsStillUnloaded) {
    platform.statuses = {{"lsmod", 256}, {"modprobe ipmi_si", 256}};
    DriverManager manager(&linuxHost);
    ASSERT_EQ(0, manager.IsIPMIDriverAvailable());
    platform.commands.clear();
    manager.ReleaseIPMIDriver();
    EXPECT_EQ((std::vector<std::string>{kUnloadSi, kUnloadDevIntf, kUnloadMsgHandler}), platform.commands);
}

TEST_F(DriverManagerTest, EsxAndEsxiHostsRunNoShellCommand) {
    for (FakeOSProbe probe : {FakeOSProbe::Esx(), FakeOSProbe::Esxi()}) {
        DriverManager manager(&probe);
        EXPECT_EQ(0, manager.IsIPMIDriverAvailable());
        EXPECT_EQ(0, manager.IsIPMIDriverAvailable());
        EXPECT_EQ(0, manager.ReleaseIPMIDriver());
        EXPECT_FALSE(manager.IsDriverReady());
    }
    EXPECT_TRUE(platform.commands.empty());
    EXPECT_TRUE(platform.sleeps.empty());
}

TEST_F(DriverManagerTest, ReleaseSkipsOnlyEsxi) {
    FakeOSProbe esxi = FakeOSProbe::Esxi();
    DriverManager onEsxi(&esxi);
    onEsxi.LoadIPMIDriver();
    platform.commands.clear();
    onEsxi.ReleaseIPMIDriver();
    EXPECT_TRUE(platform.commands.empty());

    FakeOSProbe esx = FakeOSProbe::Esx();
    DriverManager onEsx(&esx);
    onEsx.LoadIPMIDriver();
    platform.commands.clear();
    onEsx.ReleaseIPMIDriver();
    EXPECT_EQ((std::vector<std::string>{kUnloadSi, kUnloadDevIntf, kUnloadMsgHandler}), platform.commands);
}

TEST_F(DriverManagerTest, SingleCommandsAnswerTheRawShellStatus) {
    platform.defaultStatus = 0x7F00;
    DriverManager manager(&linuxHost);
    EXPECT_EQ(0x7F00, manager.IsDriverAvailable(BQMString("ipmi_si", BQMString::BQM_ENCODING_UTF8)));
    EXPECT_EQ(0x7F00, manager.LoadDriver(BQMString("ipmi_si", BQMString::BQM_ENCODING_UTF8)));
    EXPECT_EQ(0x7F00, manager.ReleaseDriver(BQMString("ipmi_si", BQMString::BQM_ENCODING_UTF8)));
    EXPECT_EQ((std::vector<std::string>{kCheckSi, kLoadSi, "sleep 3000", kUnloadSi}), platform.events);
}

// A shell that complains on its standard error, as dash does about a
// missing lsmod.
class ComplainingPlatform : public FakePlatform {
  public:
    int RunShellCommand(const std::string& command) override {
        const char complaint[] = "sh: 1: lsmod: not found\n";
        ssize_t written = write(STDERR_FILENO, complaint, sizeof(complaint) - 1);
        (void)written;
        FakePlatform::RunShellCommand(command);
        return kNotFound;
    }
};

TEST(DriverManagerStderrTest, ShellComplaintsDuringTheChecksStayOffStandardError) {
    ComplainingPlatform platform;
    FakeOSProbe linuxHost = FakeOSProbe::Linux();
    DriverManager manager(&linuxHost);
    testing::internal::CaptureStderr();
    manager.IsDriverAvailable(BQMString("ipmi_si", BQMString::BQM_ENCODING_UTF8));
    fputs("after\n", stderr);
    EXPECT_EQ("after\n", testing::internal::GetCapturedStderr());
}

}  // namespace

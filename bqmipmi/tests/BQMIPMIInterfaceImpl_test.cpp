#include "BQMIPMIInterfaceImpl.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "BQMIPMISession.h"
#include "BQMIPMISessionHandler.h"
#include "BQMLogger.h"
#include "IPMITestSupport.h"
#include "InitializeBQMLogger.h"

namespace {

class BQMIPMIInterfaceImplTest : public ::testing::Test {
protected:
    void SetUp() override {
        ASSERT_TRUE(directory.Ok());
        BQMIPMISession::SetConfigurationFileName(BQMString("BQMIPMIConfig.xml"));
    }
    void TearDown() override {
        BQMLogger::Terminate();
        BQMIPMISessionHandler::DestroyInstance();
    }

    ScopedWorkingDirectory directory;
    FakePlatform platform;
    FakeIPMIDevice device;
    _BQMIPMIConfiguration generationConfig = {60, 5, 5, 50, 0, 0};
    _BQMIPMICommandData request = GenerationRequest();
    BQMIPMIInterfaceImpl library{kIPMIDriverUnloadPauseMs, platform, device};
};

TEST_F(BQMIPMIInterfaceImplTest, AFailedInitializeLeavesNoDriverLoadedAndLetsNoRequestThrough) {
    platform.defaultStatus = FakePlatform::kNotFound;  // no module tools: every load fails
    EXPECT_EQ(library.Initialize(&generationConfig), 1);
    EXPECT_EQ(library.Release(), 1);  // the low byte of 257: no session was opened
    EXPECT_TRUE(device.opened.empty());

    FakePlatform shell;
    shell.statuses = {{"lsmod", 256}};  // none loaded; every load works
    device.openable.clear();
    BQMIPMIInterfaceImpl quick(0, shell, device);
    testing::internal::CaptureStderr();
    EXPECT_EQ(quick.Initialize(&generationConfig), 257);
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "Can't open IPMI device\n");
    EXPECT_EQ(quick.IPMIRequest(&request), 257);
    // Three checks, three loads and three unloads; the open's five pauses, then the unload pauses chosen.
    EXPECT_EQ(shell.commands.size(), 9u);
    EXPECT_EQ(shell.commands.back(), "rmmod ipmi_msghandler > /dev/null 2>&1 ");
    EXPECT_EQ(shell.sleeps, (std::vector<unsigned long>{1000, 1000, 1000, 1000, 1000, 0, 0, 0}));
    shell.commands.clear();
    quick.Release();
    EXPECT_TRUE(shell.commands.empty());  // nothing is unloaded twice
}

TEST_F(BQMIPMIInterfaceImplTest, DestroyingWithoutReleaseStillUnloadsTheDrivers) {
    platform.statuses = {{"grep ipmi_si", 256}};
    {
        BQMIPMIInterfaceImpl forgotten(0, platform, device);
        ASSERT_EQ(forgotten.Initialize(&generationConfig), 0);
    }
    EXPECT_EQ(platform.commands.back(), "rmmod ipmi_si > /dev/null 2>&1 ");
}

TEST_F(BQMIPMIInterfaceImplTest, ConfigurationFileOverridesTheGivenTimingAndTheRequestsOwn) {
    const std::vector<unsigned> asGiven = {61, 6, 3, 7};
    // clang-format off
    const struct {
        const char* file;  // null: none
        bool own;          // the request brings {60, 5, 4, 9}
        std::vector<unsigned> session;
        unsigned requests, interval;
    } cases[] = {
        {nullptr, false, asGiven, 3, 7}, {nullptr, true, asGiven, 4, 9},
        {"<c><d name='Default'>", false, asGiven, 3, 7},  // not XML
        {"<c><d name='x'><RetryCount>1</RetryCount></d></c>", false, asGiven, 3, 7},
        {"<c><d name='Other'><RetryCount>9</RetryCount></d>"
         "<d name='Default'><RetryCount>2</RetryCount></d></c>", false, {61, 6, 2, 7}, 2, 7},
        {"<c><d name='Default'><RetryCount>1</RetryCount></d></c>", true, {61, 6, 1, 7}, 1, 7},
        {"<c><d name='Default'><e name='Default'><PollingInterval>10</PollingInterval><PollingCount>11"
         "</PollingCount><RetryCount> 4 </RetryCount><RetryInterval>13</RetryInterval></e></d></c>",
         false, {10, 11, 4, 13}, 4, 13}};
    // clang-format on
    for (const auto& c : cases) {
        SCOPED_TRACE(c.file ? c.file : "no file");
        if (c.file != nullptr) WriteWholeFile("BQMIPMIConfig.xml", c.file);
        BQMIPMISession::SetConfigurationFileName(BQMString("BQMIPMIConfig.xml"));  // forgets what was read
        FakePlatform shell;
        FakeIPMIDevice controller;
        controller.defaultAnswer = {0xC0};  // transient: retried retryCount times
        _BQMIPMIConfiguration given = {61, 6, 3, 7, 0, 0}, own = {60, 5, 4, 9, 0, 0};
        request.configuration = c.own ? &own : nullptr;
        BQMIPMIInterfaceImpl fresh(kIPMIDriverUnloadPauseMs, shell, controller);
        ASSERT_EQ(fresh.Initialize(&given), 0);
        const _BQMIPMIConfiguration& s =
            BQMIPMISessionHandler::GetInstance()->GetSession()->GetConfiguration();
        EXPECT_EQ(std::vector<unsigned>({s.pollInterval, s.pollCount, s.retryCount, s.retryInterval}),
                  c.session);
        EXPECT_EQ(fresh.IPMIRequest(&request), 0);
        EXPECT_EQ(controller.sent.size(), c.requests);
        EXPECT_EQ(shell.sleeps, std::vector<unsigned long>(c.requests, c.interval));
        EXPECT_EQ(request.configuration, c.own ? &own : nullptr);
        fresh.Release();
    }
}

TEST_F(BQMIPMIInterfaceImplTest, OnlyTheMarkerFileTurnsOnTheLibrarysLogAndReleaseClosesTheDevice) {
    EXPECT_EQ(library.IPMIRequest(&request), 257);  // before Initialize
    EXPECT_FALSE(InitializeBQMLogger());            // no marker file: no log files
    EXPECT_FALSE(std::filesystem::exists("bqmipmi_internal.log") || std::filesystem::exists("bqmipmi.log"));
    WriteWholeFile("kpxdebuglog", "");
    device.defaultAnswer = FakeIPMIDevice::Generation(0x00, 0x30);
    testing::internal::CaptureStderr();
    ASSERT_EQ(library.Initialize(&generationConfig), 0);
    EXPECT_EQ(library.IPMIRequest(nullptr), 257);
    EXPECT_EQ(library.IPMIRequest(&request) + library.Release(), 0);
    EXPECT_EQ(device.closed, std::vector<int>{FakeIPMIDevice::kFd});
    BQMLogger::Terminate();
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
    // The whole answer, as the caller gets it, in the internal log.
    EXPECT_NE(ReadWholeFile("bqmipmi_internal.log")
                  .find("IPMI Request :  0x30 0xbd      IPMI Response :   0x31 0xbd 0x00 0x01 0x02 0x03 0x04 "
                        "0x05 0x30\n"),
              std::string::npos);
}

}  // namespace

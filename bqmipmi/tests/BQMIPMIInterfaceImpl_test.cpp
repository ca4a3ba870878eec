#include "BQMIPMIInterfaceImpl.h"

#include <gtest/gtest.h>

#include <cstring>
#include <string>
#include <vector>

#include "BQMIPMISession.h"
#include "BQMIPMISessionHandler.h"
#include "FakeIPMIDevice.h"
#include "FakePlatform.h"
#include "ScopedWorkingDirectory.h"

namespace {

typedef FakeIPMIDevice::ReceiveStep ReceiveStep;

class BQMIPMIInterfaceImplTest : public ::testing::Test {
  protected:
    void SetUp() override {
        ASSERT_TRUE(directory.Ok());
        BQMIPMISession::SetConfigurationFileName(
            BQMString("BQMIPMIConfig.xml", BQMString::BQM_ENCODING_UTF8));
        device.openable["/dev/ipmi0"] = FakeIPMIDevice::kFd;
        std::memset(&request, 0, sizeof(request));
        request.requestLength = 2;
        request.requestBuffer[0] = 0x30;
        request.requestBuffer[1] = 0xBD;
        request.responseLength = 9;
    }
    void TearDown() override { BQMIPMISessionHandler::DestroyInstance(); }

    ScopedWorkingDirectory directory;
    FakePlatform platform;
    FakeIPMIDevice device;
    _BQMIPMIConfiguration generationConfig = {60, 5, 5, 50, 0, 0};
    _BQMIPMICommandData request;
};

TEST_F(BQMIPMIInterfaceImplTest, NullRequestAnswers257) {
    BQMIPMIInterfaceImpl library;
    ASSERT_EQ(0, library.Initialize(&generationConfig));
    EXPECT_EQ(257, library.IPMIRequest(nullptr));
    EXPECT_TRUE(device.sent.empty());
    library.Release();
}

TEST_F(BQMIPMIInterfaceImplTest, RequestWithoutInitializeDoesNotTouchTheDevice) {
    BQMIPMIInterfaceImpl library;
    EXPECT_EQ(257, library.IPMIRequest(&request));
    EXPECT_TRUE(device.opened.empty());
}

TEST_F(BQMIPMIInterfaceImplTest, SuccessfulRequestFillsTheResponseAndReleaseClosesTheDevice) {
    device.defaultAnswer = FakeIPMIDevice::GenerationAnswer(0x00, 0x41);
    BQMIPMIInterfaceImpl library;
    ASSERT_EQ(0, library.Initialize(&generationConfig));
    EXPECT_EQ(3u, platform.commands.size());  // the three module checks

    EXPECT_EQ(0, library.IPMIRequest(&request));
    EXPECT_EQ(0x00, request.responseBuffer[2]);
    EXPECT_EQ(0x41, request.responseBuffer[8]);
    EXPECT_EQ(9u, request.responseLength);
    EXPECT_EQ(nullptr, request.configuration);

    EXPECT_EQ(0, library.Release());
    EXPECT_EQ(std::vector<int>{FakeIPMIDevice::kFd}, device.closed);
    EXPECT_EQ(3u, platform.commands.size());
    EXPECT_TRUE(platform.sleeps.empty());
}

TEST_F(BQMIPMIInterfaceImplTest, DriversThatCannotBeLoadedFailFastAndLeaveNothingToUnload) {
    platform.defaultStatus = FakePlatform::kNotFound;
    BQMIPMIInterfaceImpl library;
    EXPECT_EQ(1, library.Initialize(&generationConfig));
    EXPECT_EQ(6u, platform.commands.size());
    EXPECT_TRUE(device.opened.empty());

    EXPECT_EQ(257, library.IPMIRequest(&request));
    EXPECT_EQ(1, library.Release());  // no session was opened
    EXPECT_EQ(6u, platform.commands.size());
    EXPECT_TRUE(platform.sleeps.empty());
    EXPECT_TRUE(device.opened.empty());
}

TEST_F(BQMIPMIInterfaceImplTest, DriversLoadedByTheLibraryAreUnloadedOnRelease) {
    platform.statuses = {{"lsmod", 256}};
    BQMIPMIInterfaceImpl library;
    ASSERT_EQ(0, library.Initialize(&generationConfig));
    ASSERT_EQ(0, library.IPMIRequest(&request));
    platform.events.clear();
    library.Release();
    EXPECT_EQ((std::vector<std::string>{"sleep 3000", "rmmod ipmi_si > /dev/null 2>&1 ", "sleep 3000",
                                        "rmmod ipmi_devintf > /dev/null 2>&1 ", "sleep 3000",
                                        "rmmod ipmi_msghandler > /dev/null 2>&1 "}),
              platform.events);
}

TEST_F(BQMIPMIInterfaceImplTest, AbsentDeviceGives257AfterFiveOpenPasses) {
    device.openable.clear();
    BQMIPMIInterfaceImpl library;
    testing::internal::CaptureStderr();
    EXPECT_EQ(257, library.Initialize(&generationConfig));
    EXPECT_EQ("Can't open IPMI device\n", testing::internal::GetCapturedStderr());
    EXPECT_EQ(std::vector<unsigned long>(5, 1000), platform.sleeps);
    EXPECT_EQ(257, library.IPMIRequest(&request));
    EXPECT_EQ(15u, device.opened.size());
    library.Release();
}

TEST_F(BQMIPMIInterfaceImplTest, WithoutConfigurationFileTheGivenTimingApplies) {
    device.defaultAnswer = {0xC0};
    _BQMIPMIConfiguration config = {60, 5, 3, 7, 0, 0};
    BQMIPMIInterfaceImpl library;
    ASSERT_EQ(0, library.Initialize(&config));
    EXPECT_EQ(0, library.IPMIRequest(&request));
    EXPECT_EQ(3u, device.sent.size());
    EXPECT_EQ(std::vector<unsigned long>(3, 7), platform.sleeps);
    EXPECT_EQ(0xC0, request.responseBuffer[2]);
    library.Release();
}

TEST_F(BQMIPMIInterfaceImplTest, ConfigurationFileChangesOnlyTheKeysItHolds) {
    ScopedWorkingDirectory::WriteFile("BQMIPMIConfig.xml",
                                      "<BQMIPMIConfig><Configuration name=\"Default\">"
                                      "<RetryCount>2</RetryCount></Configuration></BQMIPMIConfig>");
    device.defaultAnswer = {0xC0};
    BQMIPMIInterfaceImpl library;
    ASSERT_EQ(0, library.Initialize(&generationConfig));
    EXPECT_EQ(0, library.IPMIRequest(&request));
    EXPECT_EQ(2u, device.sent.size());
    EXPECT_EQ(std::vector<unsigned long>(2, 50), platform.sleeps);
    library.Release();
}

TEST_F(BQMIPMIInterfaceImplTest, RequestsOwnConfigurationAppliesUnlessTheFileGaveOne) {
    device.defaultAnswer = {0xC0};
    _BQMIPMIConfiguration own = {60, 5, 4, 9, 0, 0};
    request.configuration = &own;
    {
        BQMIPMIInterfaceImpl library;
        ASSERT_EQ(0, library.Initialize(&generationConfig));
        EXPECT_EQ(0, library.IPMIRequest(&request));
        EXPECT_EQ(4u, device.sent.size());
        EXPECT_EQ(std::vector<unsigned long>(4, 9), platform.sleeps);
        EXPECT_EQ(&own, request.configuration);
        library.Release();
    }

    ScopedWorkingDirectory::WriteFile("BQMIPMIConfig.xml",
                                      "<c><d name=\"Default\"><RetryCount>1</RetryCount></d></c>");
    device.sent.clear();
    BQMIPMIInterfaceImpl library;
    ASSERT_EQ(0, library.Initialize(&generationConfig));
    EXPECT_EQ(0, library.IPMIRequest(&request));
    EXPECT_EQ(1u, device.sent.size());
    EXPECT_EQ(&own, request.configuration);
    library.Release();
}

TEST_F(BQMIPMIInterfaceImplTest, ReleaseWithoutSessionAnswersTheLowByteOf257) {
    BQMIPMIInterfaceImpl library;
    EXPECT_EQ(1, library.Release());
}

TEST_F(BQMIPMIInterfaceImplTest, SessionsAreKeptPerProcess) {
    BQMIPMISessionHandler* handler = BQMIPMISessionHandler::GetInstance();
    BQMIPMISession* first = handler->GetSession();
    EXPECT_EQ(first, handler->GetSession());
    EXPECT_EQ(0, handler->ReleaseSession());
    EXPECT_EQ(257, handler->ReleaseSession());
}

}  // namespace

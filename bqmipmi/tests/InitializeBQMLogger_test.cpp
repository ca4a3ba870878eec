#include "InitializeBQMLogger.h"

#include <gtest/gtest.h>

#include <cstring>
#include <regex>
#include <sstream>
#include <string>

#include "BQMIPMIInterfaceImpl.h"
#include "BQMIPMISession.h"
#include "BQMIPMISessionHandler.h"
#include "BQMLogger.h"
#include "FakeIPMIDevice.h"
#include "FakePlatform.h"
#include "ScopedWorkingDirectory.h"

namespace {

class InitializeBQMLoggerTest : public ::testing::Test {
  protected:
    void SetUp() override {
        ASSERT_TRUE(directory.Ok());
        BQMIPMISession::SetConfigurationFileName(
            BQMString("BQMIPMIConfig.xml", BQMString::BQM_ENCODING_UTF8));
        device.openable["/dev/ipmi0"] = FakeIPMIDevice::kFd;
        device.defaultAnswer = FakeIPMIDevice::GenerationAnswer(0x00, 0x30);
    }
    void TearDown() override {
        BQMLogger::Terminate();
        BQMIPMISessionHandler::DestroyInstance();
    }

    // One detection's worth of library use.
    void RunOneRequest() {
        _BQMIPMIConfiguration config = {60, 5, 5, 50, 0, 0};
        _BQMIPMICommandData request;
        std::memset(&request, 0, sizeof(request));
        request.requestLength = 2;
        request.requestBuffer[0] = 0x30;
        request.requestBuffer[1] = 0xBD;
        request.responseLength = 9;
        BQMIPMIInterfaceImpl library;
        ASSERT_EQ(0, library.Initialize(&config));
        ASSERT_EQ(0, library.IPMIRequest(&request));
        library.Release();
    }

    ScopedWorkingDirectory directory;
    FakePlatform platform;
    FakeIPMIDevice device;
};

TEST_F(InitializeBQMLoggerTest, WithoutMarkerNothingIsWritten) {
    EXPECT_FALSE(InitializeBQMLogger());
    RunOneRequest();
    EXPECT_FALSE(BQMLogger::IsEnabled());
    EXPECT_FALSE(ScopedWorkingDirectory::Exists("bqmipmi_internal.log"));
    EXPECT_FALSE(ScopedWorkingDirectory::Exists("bqmipmi.log"));
}

TEST_F(InitializeBQMLoggerTest, MarkerSendsDesignedLinesToTheInternalLogAndNothingToStderr) {
    ScopedWorkingDirectory::WriteFile("kpxdebuglog", "");
    testing::internal::CaptureStderr();
    RunOneRequest();
    BQMLogger::Terminate();
    EXPECT_EQ("", testing::internal::GetCapturedStderr());

    ASSERT_TRUE(ScopedWorkingDirectory::Exists("bqmipmi.log"));
    const std::string log = ScopedWorkingDirectory::ReadFile("bqmipmi_internal.log");
    // application, level padded to 5, date, time, function padded to 40, "()",
    // file padded to 30, ":", line padded to 3, message.
    const std::regex started(
        "(^|\n)BQMIPMILibrary INFO  : [^\n]+ [0-9]{2}:[0-9]{2}[AP]M Initialize {30}\\(\\) "
        "[^ ]*bqmipmi/src/BQMIPMIInterfaceImpl\\.cpp *: *[0-9]+ Started Logging for BQMIPMI Library\n");
    EXPECT_TRUE(std::regex_search(log, started)) << log;
    EXPECT_NE(std::string::npos, log.find("Command lsmod  | grep ipmi_si > /dev/null 2>&1 , Exit code : 0\n"))
        << log;
    EXPECT_NE(std::string::npos, log.find("Open IPMI device : /dev/ipmi0\n"));
    EXPECT_NE(std::string::npos,
              log.find("\nIPMI Request :  0x30 0xbd      IPMI Response :   0x31 0xbd 0x00 0x01 "
                       "0x02 0x03 0x04 0x05 0x30\n"))
        << log;
    EXPECT_NE(
        std::string::npos,
        log.find("IPMIProcessor::ExecuteCommand Got IPMI return code as 0 and number of retries left are 0 "
                 "out of 5\n"));
}

TEST_F(InitializeBQMLoggerTest, ExistingInternalLogIsAppendedTo) {
    ScopedWorkingDirectory::WriteFile("kpxdebuglog", "");
    ScopedWorkingDirectory::WriteFile("bqmipmi_internal.log", "earlier line\n");
    EXPECT_TRUE(InitializeBQMLogger());
    RunOneRequest();
    BQMLogger::Terminate();
    const std::string log = ScopedWorkingDirectory::ReadFile("bqmipmi_internal.log");
    EXPECT_EQ(0u, log.find("earlier line\n"));
    EXPECT_NE(std::string::npos, log.find("Started Logging for BQMIPMI Library"));
}

}  // namespace

#include "IPMIProcessor.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <cstring>
#include <string>
#include <vector>

#include "CBQMIPMICommandData.h"
#include "FakeIPMIDevice.h"
#include "FakePlatform.h"
#include "IPMICommandProcessorCreator.h"

namespace {

typedef FakeIPMIDevice::ReceiveStep ReceiveStep;
typedef FakeIPMIDevice::WaitStep WaitStep;

class IPMIProcessorTest : public ::testing::Test {
  protected:
    void SetUp() override {
        device.openable["/dev/ipmi0"] = FakeIPMIDevice::kFd;
        std::memset(&record, 0, sizeof(record));
        configuration = {60, 5, 5, 50, 0, 0};
        record.configuration = &configuration;
        record.requestLength = 2;
        record.requestBuffer[0] = 0x30;
        record.requestBuffer[1] = 0xBD;
        record.responseLength = 9;
    }

    FakePlatform platform;
    FakeIPMIDevice device;
    _BQMIPMIConfiguration configuration;
    _BQMIPMICommandData record;
};

TEST_F(IPMIProcessorTest, AbsentDeviceTakesFivePassesAndFiveOneSecondPauses) {
    device.openable.clear();
    IPMIProcessor processor;
    testing::internal::CaptureStderr();
    int status = processor.Initialize();
    std::string errors = testing::internal::GetCapturedStderr();

    EXPECT_EQ(320, status);
    EXPECT_EQ("Can't open IPMI device\n", errors);
    EXPECT_EQ(std::vector<unsigned long>(5, 1000), platform.sleeps);
    ASSERT_EQ(15u, device.opened.size());
    for (size_t pass = 0; pass < 5; ++pass) {
        EXPECT_EQ("/dev/ipmi0", device.opened[pass * 3]);
        EXPECT_EQ("/dev/ipmi/0", device.opened[pass * 3 + 1]);
        EXPECT_EQ("/dev/ipmidev/0", device.opened[pass * 3 + 2]);
    }
    EXPECT_EQ(-1, processor.GetFileDescriptor());
}

TEST_F(IPMIProcessorTest, OpensTheFirstNodeThatOpensWithoutPausing) {
    device.openable.clear();
    device.openable["/dev/ipmidev/0"] = FakeIPMIDevice::kFd;
    IPMIProcessor processor;
    EXPECT_EQ(0, processor.Initialize());
    EXPECT_EQ(FakeIPMIDevice::kFd, processor.GetFileDescriptor());
    EXPECT_EQ(3u, device.opened.size());
    EXPECT_TRUE(platform.sleeps.empty());
}

TEST_F(IPMIProcessorTest, ReleaseAndDestructionCloseTheDeviceOnce) {
    {
        IPMIProcessor processor;
        ASSERT_EQ(0, processor.Initialize());
        processor.Release();
        EXPECT_EQ(-1, processor.GetFileDescriptor());
    }
    EXPECT_EQ(std::vector<int>{FakeIPMIDevice::kFd}, device.closed);
}

TEST_F(IPMIProcessorTest, CreatorAnswersNullWhenTheDeviceCannotBeOpened) {
    device.openable.clear();
    testing::internal::CaptureStderr();
    IIPMICommandProcessor* processor = IPMICommandProcessorCreator::Create();
    testing::internal::GetCapturedStderr();
    EXPECT_EQ(nullptr, processor);

    device.openable["/dev/ipmi0"] = FakeIPMIDevice::kFd;
    processor = IPMICommandProcessorCreator::Create();
    ASSERT_NE(nullptr, processor);
    delete processor;
    EXPECT_EQ(std::vector<int>{FakeIPMIDevice::kFd}, device.closed);
}

TEST_F(IPMIProcessorTest, SendsTheRequestToTheSystemInterfaceAndFillsTheResponse) {
    record.requestLength = 4;
    record.requestBuffer[2] = 0x11;
    record.requestBuffer[3] = 0x22;
    device.defaultAnswer = FakeIPMIDevice::GenerationAnswer(0x00, 0x30);
    IPMIProcessor processor;
    ASSERT_EQ(0, processor.Initialize());
    CBQMIPMICommandData command(&record);
    const long firstId = gnMsgID;

    ASSERT_EQ(0, processor.Process(command));

    ASSERT_EQ(1u, device.sent.size());
    const FakeIPMIDevice::SentRequest& sent = device.sent[0];
    EXPECT_EQ(0x30, sent.netfn);
    EXPECT_EQ(0xBD, sent.cmd);
    EXPECT_EQ((std::vector<unsigned char>{0x11, 0x22}), sent.data);
    EXPECT_EQ(firstId, sent.msgid);
    EXPECT_EQ(firstId + 1, gnMsgID);
    EXPECT_EQ(8u, sent.addrLen);
    EXPECT_EQ(12, sent.addrType);
    EXPECT_EQ(15, sent.channel);
    EXPECT_EQ(0, sent.lun);

    EXPECT_EQ(0x31, record.responseBuffer[0]);
    EXPECT_EQ(0xBD, record.responseBuffer[1]);
    EXPECT_EQ(0x00, record.responseBuffer[2]);
    EXPECT_EQ(0x30, record.responseBuffer[8]);
    EXPECT_EQ(9u, record.responseLength);
    EXPECT_TRUE(platform.sleeps.empty());
}

TEST_F(IPMIProcessorTest, EveryWaitIsArmedWithTwentySecondsAndSixtyMicroseconds) {
    device.waits = {{0, false}, {0, false}};
    IPMIProcessor processor;
    ASSERT_EQ(0, processor.Initialize());
    CBQMIPMICommandData command(&record);
    ASSERT_EQ(0, processor.Process(command));
    ASSERT_EQ(3u, device.waitTimeouts.size());
    for (const struct timeval& timeout : device.waitTimeouts) {
        EXPECT_EQ(20, timeout.tv_sec);
        EXPECT_EQ(60, timeout.tv_usec);
    }
}

TEST_F(IPMIProcessorTest, AnswerWithAForeignIdIsDroppedAndCostsOneAttempt) {
    device.receives = {{ReceiveStep::kForeignId, 0, {0xC0}}, {ReceiveStep::kAnswer, 0, {0x00, 0x44}}};
    IPMIProcessor processor;
    ASSERT_EQ(0, processor.Initialize());
    CBQMIPMICommandData command(&record);
    ASSERT_EQ(0, processor.Process(command));
    EXPECT_EQ(2, device.receiveCalls);
    EXPECT_EQ(0x00, record.responseBuffer[2]);
    EXPECT_EQ(0x44, record.responseBuffer[3]);
    EXPECT_EQ(4u, record.responseLength);
    EXPECT_TRUE(platform.sleeps.empty());
}

TEST_F(IPMIProcessorTest, OnlyForeignAnswersExhaustTheAttempts) {
    configuration.retryCount = 3;
    device.receives.assign(5, ReceiveStep{ReceiveStep::kForeignId, 0, {0x00}});
    IPMIProcessor processor;
    ASSERT_EQ(0, processor.Initialize());
    CBQMIPMICommandData command(&record);
    EXPECT_EQ(320, processor.Process(command));
    EXPECT_EQ(3, device.receiveCalls);
}

TEST_F(IPMIProcessorTest, TimeOutsAndWaitErrorsPauseTheRetryIntervalEach) {
    configuration.retryCount = 3;
    configuration.retryInterval = 70;
    device.waits = {{0, false}, {-1, false}, {0, false}};
    IPMIProcessor processor;
    ASSERT_EQ(0, processor.Initialize());
    CBQMIPMICommandData command(&record);
    EXPECT_EQ(320, processor.Process(command));
    EXPECT_EQ(0, device.receiveCalls);
    EXPECT_EQ(std::vector<unsigned long>(3, 70), platform.sleeps);
}

TEST_F(IPMIProcessorTest, ReadyWithoutTheDeviceInTheSetRetriesWithoutPausing) {
    device.waits = {{1, false}};
    IPMIProcessor processor;
    ASSERT_EQ(0, processor.Initialize());
    CBQMIPMICommandData command(&record);
    EXPECT_EQ(0, processor.Process(command));
    EXPECT_EQ(2u, device.waitTimeouts.size());
    EXPECT_TRUE(platform.sleeps.empty());
}

TEST_F(IPMIProcessorTest, ReceiveErrorPausesAndRetries) {
    device.receives = {{ReceiveStep::kError, EAGAIN, {}}, {ReceiveStep::kAnswer, 0, {0x00}}};
    IPMIProcessor processor;
    ASSERT_EQ(0, processor.Initialize());
    CBQMIPMICommandData command(&record);
    EXPECT_EQ(0, processor.Process(command));
    EXPECT_EQ(std::vector<unsigned long>{50}, platform.sleeps);
    EXPECT_EQ(3u, record.responseLength);
}

TEST_F(IPMIProcessorTest, TruncatedAnswerFailsAtOnceWithCompletionCode0x10) {
    device.receives = {{ReceiveStep::kTruncated, 0, {0x00, 1, 2, 3}}};
    IPMIProcessor processor;
    ASSERT_EQ(0, processor.Initialize());
    CBQMIPMICommandData command(&record);
    EXPECT_EQ(320, processor.Process(command));
    EXPECT_EQ(1, device.receiveCalls);
    EXPECT_EQ(0x31, record.responseBuffer[0]);
    EXPECT_EQ(0xBD, record.responseBuffer[1]);
    EXPECT_EQ(0x10, record.responseBuffer[2]);
    EXPECT_TRUE(platform.sleeps.empty());
}

TEST_F(IPMIProcessorTest, FailedSendLeavesCompletionCode1) {
    device.failSend = true;
    IPMIProcessor processor;
    ASSERT_EQ(0, processor.Initialize());
    CBQMIPMICommandData command(&record);
    EXPECT_EQ(320, processor.Process(command));
    EXPECT_EQ(1, record.responseBuffer[2]);
    EXPECT_EQ(0, device.receiveCalls);
}

TEST_F(IPMIProcessorTest, UnopenedProcessorFailsLikeAFailedSend) {
    IPMIProcessor processor;
    CBQMIPMICommandData command(&record);
    EXPECT_EQ(320, processor.Process(command));
    EXPECT_EQ(1, record.responseBuffer[2]);
}

TEST_F(IPMIProcessorTest, EachRequestTakesTheNextMessageId) {
    IPMIProcessor processor;
    ASSERT_EQ(0, processor.Initialize());
    CBQMIPMICommandData command(&record);
    ASSERT_EQ(0, processor.Process(command));
    ASSERT_EQ(0, processor.Process(command));
    ASSERT_EQ(2u, device.sent.size());
    EXPECT_EQ(device.sent[0].msgid + 1, device.sent[1].msgid);
}

// Completion-code retries: how many requests and pauses one ExecuteCommand
// costs when the controller answers cc every time (retry count 5, 50 ms).
struct CompletionCodeCase {
    unsigned char cc;
    size_t requests;
};

class CompletionCodeRetryTest : public IPMIProcessorTest,
                                public ::testing::WithParamInterface<CompletionCodeCase> {};

TEST_P(CompletionCodeRetryTest, FinalCodesStopAndTransientCodesRetry) {
    device.defaultAnswer = {GetParam().cc};
    IPMIProcessor processor;
    ASSERT_EQ(0, processor.Initialize());
    CBQMIPMICommandData command(&record);
    EXPECT_EQ(0, processor.ExecuteCommand(command));
    EXPECT_EQ(GetParam().requests, device.sent.size());
    const bool transient = GetParam().requests > 1;
    EXPECT_EQ(transient ? std::vector<unsigned long>(5, 50) : std::vector<unsigned long>(), platform.sleeps);
    EXPECT_EQ(GetParam().cc, record.responseBuffer[2]);
}

INSTANTIATE_TEST_SUITE_P(
    Codes, CompletionCodeRetryTest,
    ::testing::Values(CompletionCodeCase{0x00, 1}, CompletionCodeCase{0x01, 1}, CompletionCodeCase{0x06, 1},
                      CompletionCodeCase{0x08, 1}, CompletionCodeCase{0x10, 1}, CompletionCodeCase{0xC1, 1},
                      CompletionCodeCase{0xC2, 1}, CompletionCodeCase{0xC7, 1}, CompletionCodeCase{0xC8, 1},
                      CompletionCodeCase{0xC9, 1}, CompletionCodeCase{0xCC, 1}, CompletionCodeCase{0xCE, 1},
                      CompletionCodeCase{0x07, 5}, CompletionCodeCase{0x09, 5}, CompletionCodeCase{0x0F, 5},
                      CompletionCodeCase{0x11, 5}, CompletionCodeCase{0xC0, 5}, CompletionCodeCase{0xC3, 5},
                      CompletionCodeCase{0xC6, 5}, CompletionCodeCase{0xCA, 5}, CompletionCodeCase{0xCB, 5},
                      CompletionCodeCase{0xCD, 5}, CompletionCodeCase{0xCF, 5}, CompletionCodeCase{0xFF, 5}));

TEST_F(IPMIProcessorTest, TransientCodeThenSuccessStopsAfterTheSuccess) {
    device.receives = {{ReceiveStep::kAnswer, 0, {0xC0}},
                       {ReceiveStep::kAnswer, 0, {0xC3}},
                       {ReceiveStep::kAnswer, 0, {0x00, 0x99}}};
    IPMIProcessor processor;
    ASSERT_EQ(0, processor.Initialize());
    CBQMIPMICommandData command(&record);
    EXPECT_EQ(0, processor.ExecuteCommand(command));
    EXPECT_EQ(3u, device.sent.size());
    EXPECT_EQ((std::vector<unsigned long>{50, 50}), platform.sleeps);
    EXPECT_EQ(0x99, record.responseBuffer[3]);
}

TEST_F(IPMIProcessorTest, DeviceFailureDuringRetriesIsReturnedAtOnce) {
    device.receives = {{ReceiveStep::kAnswer, 0, {0xC0}}, {ReceiveStep::kTruncated, 0, {0x00}}};
    IPMIProcessor processor;
    ASSERT_EQ(0, processor.Initialize());
    CBQMIPMICommandData command(&record);
    EXPECT_EQ(320, processor.ExecuteCommand(command));
    EXPECT_EQ(2u, device.sent.size());
}

}  // namespace

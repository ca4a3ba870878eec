#include "IPMIProcessor.h"

#include <gtest/gtest.h>

#include <cstring>
#include <string>
#include <tuple>
#include <vector>

#include "CBQMIPMICommandData.h"
#include "IPMITestSupport.h"

namespace {

typedef std::vector<unsigned long> Sleeps;
typedef FakeIPMIDevice::Reply Reply;

class IPMIProcessorTest : public ::testing::Test {
protected:
    int Run(bool withRetries = false) {
        CBQMIPMICommandData command(&record);
        EXPECT_EQ(processor.Initialize(), 0);
        return withRetries ? processor.ExecuteCommand(command) : processor.Process(command);
    }
    FakePlatform platform;
    FakeIPMIDevice device;
    _BQMIPMIConfiguration configuration = {60, 5, 5, 50, 0, 0};
    _BQMIPMICommandData record = GenerationRequest(&configuration);
    IPMIProcessor processor{device, platform};
};

TEST_F(IPMIProcessorTest, AbsentDeviceTakesFivePassesOverThreeNodesAndFiveOneSecondPauses) {
    device.openable.clear();
    testing::internal::CaptureStderr();
    EXPECT_EQ(processor.Initialize(), 320);
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "Can't open IPMI device\n");
    EXPECT_EQ(platform.sleeps, Sleeps(5, 1000));
    ASSERT_EQ(device.opened.size(), 15u);
    EXPECT_EQ(device.opened[12] + device.opened[13] + device.opened[14],
              "/dev/ipmi0/dev/ipmi/0/dev/ipmidev/0");
    device.openable = {"/dev/ipmidev/0"};  // the last node: found in the first pass, no pause
    EXPECT_EQ(processor.Initialize(), 0);
    processor.Release();
    processor.Release();
    EXPECT_EQ(device.closed, std::vector<int>(1, FakeIPMIDevice::kFd));
    EXPECT_EQ(std::make_pair(device.opened.size(), platform.sleeps.size()), std::make_pair(18ul, 5ul));
}

TEST_F(IPMIProcessorTest, SendsToTheSystemInterfaceWithTheNextMessageIdAndFillsTheResponse) {
    record.requestLength = 4;
    record.requestBuffer[2] = 0x11;
    record.requestBuffer[3] = 0x22;
    device.defaultAnswer = FakeIPMIDevice::Generation(0x00, 0x30);
    const long firstId = gnMsgID;
    ASSERT_EQ(Run() + Run(), 0);
    ASSERT_EQ(device.sent.size(), 2u);
    EXPECT_EQ(device.sent[0].head, std::vector<int>({0x30, 0xBD, 8, 12, 15, 0}));
    EXPECT_EQ(std::make_tuple(device.sent[0].data, device.sent[0].msgid, device.sent[1].msgid),
              std::make_tuple(std::vector<unsigned char>({0x11, 0x22}), firstId, firstId + 1));
    EXPECT_EQ(std::vector<int>(record.responseBuffer, record.responseBuffer + record.responseLength),
              std::vector<int>({0x31, 0xBD, 0x00, 1, 2, 3, 4, 5, 0x30}));
}

TEST_F(IPMIProcessorTest, ReceiveAttemptsHandleTimeOutsForeignIdsErrorsAndTruncation) {
    const struct {
        const char* name;
        std::vector<int> waits;
        std::vector<Reply> replies;
        int status, receives;
        Sleeps sleeps;
        int response;  // bytes 0 to 2 afterwards
    } cases[] = {{"foreign id dropped", {}, {{{0xC0}, true}, {{0x00, 0x44}}}, 0, 2, {}, 0x31BD00},
                 {"only foreign ids", {}, std::vector<Reply>(5, {{0x00}, true}), 320, 5, {}, 0},
                 {"time-outs and wait errors pause", {0, -1, 0, 0, 0}, {}, 320, 0, Sleeps(5, 50), 0},
                 {"another descriptor ready", {2}, {}, 0, 1, {}, 0x31BD00},
                 {"receive error pauses", {}, {{{}, false, EAGAIN}, {{0xC1}}}, 0, 2, {50}, 0x31BDC1},
                 {"errno 90 ends at once", {}, {{{0x00, 1, 2}, false, 90}}, 320, 1, {}, 0x31BD10}};
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        device.waits.assign(c.waits.begin(), c.waits.end());
        device.replies.assign(c.replies.begin(), c.replies.end());
        device.receives = 0;
        device.waitTimeouts.clear();
        platform.sleeps.clear();
        EXPECT_EQ(Run(), c.status);
        EXPECT_EQ(device.receives, c.receives);
        EXPECT_EQ(platform.sleeps, c.sleeps);
        EXPECT_EQ(record.responseBuffer[0] << 16 | record.responseBuffer[1] << 8 | record.responseBuffer[2],
                  c.response);
        EXPECT_EQ(device.waitTimeouts, std::vector<long>(device.waitTimeouts.size(), 20000060));  // re-armed
    }
    device.failSend = true;
    EXPECT_EQ(Run(), 320);
    EXPECT_EQ(record.responseBuffer[2], 1);
}

TEST_F(IPMIProcessorTest, FinalCompletionCodesStopAndTransientOnesRetryWithPauses) {
    const std::vector<int> finalCodes = {0x00, 0x01, 0x06, 0x08, 0x10, 0xC1,
                                         0xC2, 0xC7, 0xC8, 0xC9, 0xCC, 0xCE};
    const std::vector<int> transient = {0x07, 0x09, 0x0F, 0x11, 0xC0, 0xC3,
                                        0xC6, 0xCA, 0xCB, 0xCD, 0xCF, 0xFF};
    for (const std::vector<int>* codes : {&finalCodes, &transient}) {
        for (int cc : *codes) {
            device.defaultAnswer = {static_cast<unsigned char>(cc)};
            device.sent.clear();
            platform.sleeps.clear();
            EXPECT_EQ(Run(true), 0) << cc;
            EXPECT_EQ(device.sent.size(), codes == &finalCodes ? 1u : 5u) << cc;
            EXPECT_EQ(platform.sleeps, codes == &finalCodes ? Sleeps() : Sleeps(5, 50)) << cc;
            EXPECT_EQ(record.responseBuffer[2], cc);
        }
    }
    // Retries end at success or at a device failure.
    device.replies = {{{0xC0}}, {{0xC3}}, {{0x00, 0x99}}, {{0xC0}}, {{0x00}, false, 90}};
    platform.sleeps.clear();
    device.sent.clear();
    EXPECT_EQ(Run(true), 0);
    EXPECT_EQ(std::make_pair(platform.sleeps, int(record.responseBuffer[3])),
              std::make_pair(Sleeps(2, 50), 0x99));
    EXPECT_EQ(Run(true), 320);
    EXPECT_EQ(device.sent.size(), 5u);
}

// The record the processor fills.
TEST(CBQMIPMICommandDataTest, ConstructionClearsTheResponseAndBuffersTakeAtMost255Bytes) {
    _BQMIPMIConfiguration configuration = {60, 5, 5, 50, 7, 9};
    _BQMIPMICommandData record = GenerationRequest(&configuration);
    std::memset(record.responseBuffer, 0xAB, sizeof(record.responseBuffer));
    CBQMIPMICommandData command(&record);
    EXPECT_EQ(std::string(record.responseBuffer, record.responseBuffer + 255), std::string(255, '\0'));
    EXPECT_EQ(configuration.pollingByte + configuration.pollingStatus, 0u);
    EXPECT_TRUE(command.IsPollingRequired());      // deliberately: polling byte 0 means polling is wanted
    std::vector<unsigned char> source(256, 0x5A);  // one more than fits
    command.SetRequestBufferData(source.data(), 256);
    command.SetResponseBufferData(source.data(), 256);
    EXPECT_EQ(std::make_pair(record.requestLength, record.responseLength), std::make_pair(2u, 9u));
    EXPECT_EQ(record.responseBuffer[0], 0);
    command.SetRequestBufferData(source.data(), 255);
    command.SetResponseBufferData(source.data(), 255);
    EXPECT_EQ(std::make_pair(record.requestLength, record.responseLength), std::make_pair(255u, 255u));
    EXPECT_EQ(record.requestBuffer[254] + record.responseBuffer[254], 2 * 0x5A);
    command.SetRequestBufferData(nullptr, 2);  // only the length
    EXPECT_EQ(std::make_pair(record.requestLength, int(record.requestBuffer[0])), std::make_pair(2u, 0x5A));
}

}  // namespace

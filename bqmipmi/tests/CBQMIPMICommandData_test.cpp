#include "CBQMIPMICommandData.h"

#include <gtest/gtest.h>

#include <cstring>

namespace {

class CBQMIPMICommandDataTest : public ::testing::Test {
  protected:
    void SetUp() override {
        std::memset(&record, 0, sizeof(record));
        std::memset(record.responseBuffer, 0xAB, sizeof(record.responseBuffer));
        configuration = {60, 5, 5, 50, 7, 9};
        record.configuration = &configuration;
    }
    _BQMIPMIConfiguration configuration;
    _BQMIPMICommandData record;
};

TEST_F(CBQMIPMICommandDataTest, ConstructionClearsResponseAndPollingFields) {
    CBQMIPMICommandData command(&record);
    for (unsigned char byte : record.responseBuffer) ASSERT_EQ(0, byte);
    EXPECT_EQ(0u, configuration.pollingByte);
    EXPECT_EQ(0, configuration.pollingStatus);
    EXPECT_EQ(5u, configuration.retryCount);
}

TEST_F(CBQMIPMICommandDataTest, ConstructionWithoutConfigurationClearsResponseOnly) {
    record.configuration = nullptr;
    CBQMIPMICommandData command(&record);
    EXPECT_EQ(0, record.responseBuffer[254]);
    EXPECT_EQ(0u, command.GetRetryCount());
    command.SetRetryCount(3);  // no configuration: nothing to change, no crash
    EXPECT_EQ(nullptr, command.GetConfigurationData());
}

TEST_F(CBQMIPMICommandDataTest, AccessorsReachTheRecord) {
    CBQMIPMICommandData command(&record);
    command.SetRetryCount(2);
    command.SetRetryInterval(11);
    command.SetPollCount(3);
    command.SetPollInterval(4);
    command.SetPollingByteStatus(8, 1);
    EXPECT_EQ(2u, configuration.retryCount);
    EXPECT_EQ(11u, configuration.retryInterval);
    EXPECT_EQ(3u, configuration.pollCount);
    EXPECT_EQ(4u, configuration.pollInterval);
    EXPECT_EQ(8u, command.GetPollingByte());
    EXPECT_EQ(1, command.GetPollingStatus());
    record.responseBuffer[8] = 0x30;
    EXPECT_EQ(0x30, *command.GetResponseBufferData(8));
    EXPECT_EQ(record.requestBuffer, command.GetRequestBufferData());
}

struct LengthCase {
    unsigned int length;
    bool accepted;
};

class BufferLengthTest : public CBQMIPMICommandDataTest, public ::testing::WithParamInterface<LengthCase> {};

TEST_P(BufferLengthTest, RequestAndResponseAcceptAtMost255Bytes) {
    record.requestLength = 2;
    record.responseLength = 9;
    CBQMIPMICommandData command(&record);
    unsigned char source[300];
    std::memset(source, 0x5A, sizeof(source));

    command.SetRequestBufferData(source, GetParam().length);
    command.SetResponseBufferData(source, GetParam().length);

    if (GetParam().accepted) {
        EXPECT_EQ(GetParam().length, command.GetRequestBufferLength());
        EXPECT_EQ(GetParam().length, command.GetResponseBufferLength());
        if (GetParam().length > 0) {
            EXPECT_EQ(0x5A, record.requestBuffer[GetParam().length - 1]);
            EXPECT_EQ(0x5A, record.responseBuffer[GetParam().length - 1]);
        }
    } else {
        EXPECT_EQ(2u, command.GetRequestBufferLength());
        EXPECT_EQ(9u, command.GetResponseBufferLength());
        EXPECT_EQ(0, record.requestBuffer[0]);
        EXPECT_EQ(0, record.responseBuffer[0]);
    }
}

INSTANTIATE_TEST_SUITE_P(Lengths, BufferLengthTest,
                         ::testing::Values(LengthCase{0, true}, LengthCase{2, true}, LengthCase{255, true},
                                           LengthCase{256, false}, LengthCase{1000, false}));

TEST_F(CBQMIPMICommandDataTest, NullDataSetsOnlyTheLength) {
    CBQMIPMICommandData command(&record);
    record.requestBuffer[0] = 0x30;
    command.SetRequestBufferData(nullptr, 2);
    EXPECT_EQ(2u, record.requestLength);
    EXPECT_EQ(0x30, record.requestBuffer[0]);
}

TEST_F(CBQMIPMICommandDataTest, ZeroPollingByteMeansPollingIsRequired) {
    CBQMIPMICommandData command(&record);
    EXPECT_TRUE(command.IsPollingRequired());
    command.SetPollingByteStatus(1, 0);
    EXPECT_FALSE(command.IsPollingRequired());
}

}  // namespace

#include "CBQMIPMICommandData.h"

#include <gtest/gtest.h>

#include <cstring>

#include "IPMITestSupport.h"

namespace {

TEST(CBQMIPMICommandDataTest, ConstructionClearsTheResponseAndThePollingFields) {
    _BQMIPMIConfiguration configuration = {60, 5, 5, 50, 7, 9};
    _BQMIPMICommandData record = GenerationRequest(&configuration);
    std::memset(record.responseBuffer, 0xAB, sizeof(record.responseBuffer));
    CBQMIPMICommandData command(&record);
    EXPECT_EQ(std::string(record.responseBuffer, record.responseBuffer + 255), std::string(255, '\0'));
    EXPECT_EQ(configuration.pollingByte + configuration.pollingStatus, 0u);
    EXPECT_TRUE(command.IsPollingRequired());  // deliberately: polling byte 0 means polling is wanted
    command.SetPollingByteStatus(1, 0);
    EXPECT_FALSE(command.IsPollingRequired());
    record.configuration = nullptr;
    CBQMIPMICommandData bare(&record);
    bare.SetRetryCount(3);  // no configuration: nothing to change
    EXPECT_EQ(bare.GetRetryCount(), 0u);
}

TEST(CBQMIPMICommandDataTest, BuffersTakeAtMost255BytesAndNullDataSetsOnlyTheLength) {
    _BQMIPMICommandData record = GenerationRequest();
    CBQMIPMICommandData command(&record);
    unsigned char source[256];
    std::memset(source, 0x5A, sizeof(source));
    command.SetRequestBufferData(source, 256);
    command.SetResponseBufferData(source, 256);
    EXPECT_EQ(std::make_pair(record.requestLength, record.responseLength),
              std::make_pair(2u, 9u));  // unchanged
    EXPECT_EQ(record.responseBuffer[0], 0);
    command.SetRequestBufferData(source, 255);
    command.SetResponseBufferData(source, 255);
    EXPECT_EQ(std::make_pair(record.requestLength, record.responseLength), std::make_pair(255u, 255u));
    EXPECT_EQ(record.requestBuffer[254], 0x5A);
    EXPECT_EQ(record.responseBuffer[254], 0x5A);
    command.SetRequestBufferData(nullptr, 2);
    EXPECT_EQ(record.requestLength, 2u);
    EXPECT_EQ(record.requestBuffer[0], 0x5A);
}

}  // namespace

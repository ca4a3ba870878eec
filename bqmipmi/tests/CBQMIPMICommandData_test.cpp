#include "CBQMIPMICommandData.h"

#include <gtest/gtest.h>

#include <cstring>
#include <vector>

#include "IPMITestSupport.h"

namespace {

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

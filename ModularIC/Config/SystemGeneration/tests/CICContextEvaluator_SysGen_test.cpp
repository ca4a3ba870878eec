#include "CICContextEvaluator_SysGen.h"

#include <gtest/gtest.h>

#include <cstring>
#include <set>
#include <string>
#include <vector>

#include "BQMIPMISession.h"
#include "BQMIPMISessionHandler.h"
#include "FakeIPMIDevice.h"
#include "FakePlatform.h"
#include "ScopedWorkingDirectory.h"

namespace {

typedef std::set<std::string> Names;
typedef FakeIPMIDevice::ReceiveStep ReceiveStep;

const Names kAllNames = {"GenPre12G",    "GenTwelveG",  "GenThirteenG",
                         "GenFourteenG", "GenFifteenG", "GenSixteenG"};

// The generation-byte rule, in the order its ranges are tested.
struct ByteCase {
    unsigned char g;
    int generation;
};

class GenerationByteTest : public ::testing::TestWithParam<ByteCase> {};

TEST_P(GenerationByteTest, MapsTheByteToAGeneration) {
    EXPECT_EQ(GetParam().generation, CICContextEvaluator_SysGen::GenerationFromByte(GetParam().g))
        << "g = 0x" << std::hex << int(GetParam().g);
}

INSTANTIATE_TEST_SUITE_P(Bytes, GenerationByteTest,
                         ::testing::Values(ByteCase{0x00, 0}, ByteCase{0x0E, 0}, ByteCase{0x0F, 1},
                                           ByteCase{0x12, 1}, ByteCase{0x15, 1}, ByteCase{0x16, 2},
                                           ByteCase{0x2F, 2}, ByteCase{0x30, 3}, ByteCase{0x31, 3},
                                           ByteCase{0x32, 3}, ByteCase{0x33, 2}, ByteCase{0x3F, 2},
                                           ByteCase{0x40, 4}, ByteCase{0x42, 4}, ByteCase{0x43, 2},
                                           ByteCase{0x4F, 2}, ByteCase{0x50, 5}, ByteCase{0x51, 5},
                                           ByteCase{0x52, 5}, ByteCase{0x53, 2}, ByteCase{0x80, 2},
                                           ByteCase{0xFF, 2}));

TEST(GenerationFromResponseTest, FailedRequestAndNonZeroCompletionCodeOverrideTheByte) {
    _BQMIPMICommandData response;
    std::memset(&response, 0, sizeof(response));
    response.responseBuffer[8] = 0x50;
    EXPECT_EQ(5, CICContextEvaluator_SysGen::GenerationFromResponse(0, response));
    EXPECT_EQ(1001, CICContextEvaluator_SysGen::GenerationFromResponse(320, response));
    EXPECT_EQ(1001, CICContextEvaluator_SysGen::GenerationFromResponse(257, response));
    response.responseBuffer[2] = 0xC1;
    EXPECT_EQ(0, CICContextEvaluator_SysGen::GenerationFromResponse(0, response));
}

// Detections through the whole IPMI library, with the controller and the
// shell faked.
class SysGenDetectionTest : public ::testing::Test {
  protected:
    void SetUp() override {
        ASSERT_TRUE(directory.Ok());
        BQMIPMISession::SetConfigurationFileName(
            BQMString("BQMIPMIConfig.xml", BQMString::BQM_ENCODING_UTF8));
        device.openable["/dev/ipmi0"] = FakeIPMIDevice::kFd;
        evaluator = CICContextEvaluator_SysGen::GetContextEvaluatorInstance();
        ASSERT_NE(nullptr, evaluator);
    }
    void TearDown() override {
        CICContextEvaluator_SysGen::cleanIPMILayer();
        CICContextEvaluator_SysGen::DeleteContextEvaluatorInstance();
        BQMIPMISessionHandler::DestroyInstance();
    }

    ScopedWorkingDirectory directory;
    FakePlatform platform;
    FakeIPMIDevice device;
    CICContextEvaluator_SysGen* evaluator = nullptr;
};

struct AnswerCase {
    std::vector<unsigned char> answer;
    int generation;
    Names names;
};

class SysGenAnswerTest : public SysGenDetectionTest, public ::testing::WithParamInterface<AnswerCase> {};

TEST_P(SysGenAnswerTest, NamesTheDetectedGenerationAndEveryOlderOne) {
    device.defaultAnswer = GetParam().answer;
    Names names;
    EXPECT_EQ(GetParam().generation, evaluator->GetSysGenerationInventoryList(names));
    EXPECT_EQ(GetParam().names, names);
    EXPECT_EQ(std::vector<int>{FakeIPMIDevice::kFd}, device.closed);  // released after the detection
}

INSTANTIATE_TEST_SUITE_P(
    Answers, SysGenAnswerTest,
    ::testing::Values(
        AnswerCase{FakeIPMIDevice::GenerationAnswer(0x00, 0x30),
                   3,
                   {"GenPre12G", "GenTwelveG", "GenThirteenG", "GenFourteenG"}},
        AnswerCase{FakeIPMIDevice::GenerationAnswer(0x00, 0x0E), 0, {"GenPre12G"}},
        AnswerCase{FakeIPMIDevice::GenerationAnswer(0x00, 0x0F), 1, {"GenPre12G", "GenTwelveG"}},
        AnswerCase{
            FakeIPMIDevice::GenerationAnswer(0x00, 0x33), 2, {"GenPre12G", "GenTwelveG", "GenThirteenG"}},
        AnswerCase{FakeIPMIDevice::GenerationAnswer(0x00, 0x41),
                   4,
                   {"GenPre12G", "GenTwelveG", "GenThirteenG", "GenFourteenG", "GenFifteenG"}},
        AnswerCase{FakeIPMIDevice::GenerationAnswer(0x00, 0x52), 5, kAllNames},
        AnswerCase{FakeIPMIDevice::GenerationAnswer(0xC1, 0x00), 0, {"GenPre12G"}},
        AnswerCase{FakeIPMIDevice::GenerationAnswer(0xCC, 0x00), 0, {"GenPre12G"}}));

TEST_F(SysGenDetectionTest, SendsOneOemRequestWithoutData) {
    device.defaultAnswer = FakeIPMIDevice::GenerationAnswer(0x00, 0x30);
    Names names;
    evaluator->GetSysGenerationInventoryList(names);
    ASSERT_EQ(1u, device.sent.size());
    EXPECT_EQ(0x30, device.sent[0].netfn);
    EXPECT_EQ(0xBD, device.sent[0].cmd);
    EXPECT_TRUE(device.sent[0].data.empty());
    EXPECT_TRUE(platform.sleeps.empty());
}

TEST_F(SysGenDetectionTest, FinalCompletionCodeIsNotRetried) {
    device.defaultAnswer = {0xC1};
    EXPECT_EQ(0, evaluator->GetSystemGeneration());
    EXPECT_EQ(1u, device.sent.size());
    EXPECT_TRUE(platform.sleeps.empty());
}

TEST_F(SysGenDetectionTest, TransientCompletionCodeIsRetriedFiveTimesFiftyMillisecondsApart) {
    device.defaultAnswer = {0xC0};
    EXPECT_EQ(0, evaluator->GetSystemGeneration());
    EXPECT_EQ(5u, device.sent.size());
    EXPECT_EQ(std::vector<unsigned long>(5, 50), platform.sleeps);
}

TEST_F(SysGenDetectionTest, TransientCompletionCodeThenAnswerGivesTheAnswersGeneration) {
    device.receives = {{ReceiveStep::kAnswer, 0, {0xC3}},
                       {ReceiveStep::kAnswer, 0, FakeIPMIDevice::GenerationAnswer(0x00, 0x40)}};
    EXPECT_EQ(4, evaluator->GetSystemGeneration());
    EXPECT_EQ(2u, device.sent.size());
    EXPECT_EQ(std::vector<unsigned long>{50}, platform.sleeps);
}

TEST_F(SysGenDetectionTest, FailedRequestSelectsEveryGeneration) {
    device.failSend = true;
    Names names;
    EXPECT_EQ(1001, evaluator->GetSysGenerationInventoryList(names));
    EXPECT_EQ(kAllNames, names);
    EXPECT_EQ("GenFailure", evaluator->GetSysGeneration());
}

TEST_F(SysGenDetectionTest, NoModuleToolsGives1001AtOnceWithoutTouchingTheDevice) {
    platform.defaultStatus = FakePlatform::kNotFound;
    Names names;
    EXPECT_EQ(1001, evaluator->GetSysGenerationInventoryList(names));
    EXPECT_EQ(kAllNames, names);
    EXPECT_TRUE(device.opened.empty());
    EXPECT_TRUE(platform.sleeps.empty());
    EXPECT_EQ(6u, platform.commands.size());

    // The library object left behind by the failed start costs nothing either.
    names.clear();
    EXPECT_EQ(1001, evaluator->GetSysGenerationInventoryList(names));
    EXPECT_EQ(kAllNames, names);
    EXPECT_TRUE(device.opened.empty());
    EXPECT_TRUE(platform.sleeps.empty());
    EXPECT_EQ(6u, platform.commands.size());
}

TEST_F(SysGenDetectionTest, AbsentDeviceGives1001AfterFiveOpenPasses) {
    device.openable.clear();
    Names names;
    testing::internal::CaptureStderr();
    EXPECT_EQ(1001, evaluator->GetSysGenerationInventoryList(names));
    EXPECT_EQ("Can't open IPMI device\n", testing::internal::GetCapturedStderr());
    EXPECT_EQ(kAllNames, names);
    EXPECT_EQ(std::vector<unsigned long>(5, 1000), platform.sleeps);
}

TEST_F(SysGenDetectionTest, GetSysGenerationNamesTheValue) {
    device.defaultAnswer = FakeIPMIDevice::GenerationAnswer(0x00, 0x31);
    EXPECT_EQ("GenFourteenG", evaluator->GetSysGeneration());
    device.defaultAnswer = FakeIPMIDevice::GenerationAnswer(0x00, 0x51);
    EXPECT_EQ("GenSixteenG", evaluator->GetSysGeneration());
}

TEST_F(SysGenDetectionTest, EachDetectionOpensAndReleasesTheLibrary) {
    device.defaultAnswer = FakeIPMIDevice::GenerationAnswer(0x00, 0x30);
    EXPECT_EQ(3, evaluator->GetSystemGeneration());
    EXPECT_EQ(3, evaluator->GetSystemGeneration());
    EXPECT_EQ(2u, device.opened.size());
    EXPECT_EQ(2u, device.closed.size());
    EXPECT_EQ(6u, platform.commands.size());
}

TEST_F(SysGenDetectionTest, LibraryPreparedByInitIPMILayerIsUsedAndThenReleased) {
    device.defaultAnswer = FakeIPMIDevice::GenerationAnswer(0x00, 0x30);
    ASSERT_TRUE(CICContextEvaluator_SysGen::initIPMILayer());
    ASSERT_TRUE(CICContextEvaluator_SysGen::initIPMILayer());
    EXPECT_EQ(1u, device.opened.size());
    EXPECT_EQ(3, evaluator->GetSystemGeneration());
    EXPECT_EQ(1u, device.opened.size());
    EXPECT_EQ(1u, device.closed.size());
}

TEST_F(SysGenDetectionTest, CleanIPMILayerReleasesAPreparedLibrary) {
    ASSERT_TRUE(CICContextEvaluator_SysGen::initIPMILayer());
    EXPECT_EQ(0, CICContextEvaluator_SysGen::cleanIPMILayer());
    EXPECT_EQ(std::vector<int>{FakeIPMIDevice::kFd}, device.closed);
    EXPECT_EQ(0, CICContextEvaluator_SysGen::cleanIPMILayer());
}

TEST_F(SysGenDetectionTest, InitIPMILayerFailsWhenNoDriverCanBeLoaded) {
    platform.defaultStatus = FakePlatform::kNotFound;
    EXPECT_FALSE(CICContextEvaluator_SysGen::initIPMILayer());
    EXPECT_TRUE(platform.sleeps.empty());
}

TEST_F(SysGenDetectionTest, SingletonIsCreatedOnceUntilDeleted) {
    EXPECT_EQ(evaluator, CICContextEvaluator_SysGen::GetContextEvaluatorInstance());
    CICContextEvaluator_SysGen::DeleteContextEvaluatorInstance();
    CICContextEvaluator_SysGen* again = CICContextEvaluator_SysGen::GetContextEvaluatorInstance();
    ASSERT_NE(nullptr, again);
    evaluator = again;
}

}  // namespace

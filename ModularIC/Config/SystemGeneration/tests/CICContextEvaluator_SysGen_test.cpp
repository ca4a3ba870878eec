#include "CICContextEvaluator_SysGen.h"

#include <gtest/gtest.h>

#include <set>
#include <string>
#include <vector>

#include "BQMIPMISession.h"
#include "BQMIPMISessionHandler.h"
#include "IPMITestSupport.h"

namespace {

typedef std::set<std::string> Names;

// The first count generation names, oldest first.
Names Oldest(size_t count) {
    const char* const order[] = {"GenPre12G",    "GenTwelveG",  "GenThirteenG",
                                 "GenFourteenG", "GenFifteenG", "GenSixteenG"};
    return Names(order, order + count);
}

// Detections through the whole IPMI library, with the controller and the shell faked.
class CICContextEvaluatorSysGenTest : public ::testing::Test {
protected:
    void SetUp() override {
        ASSERT_TRUE(directory.Ok());
        BQMIPMISession::SetConfigurationFileName(BQMString("BQMIPMIConfig.xml"));
    }
    void TearDown() override {
        CICContextEvaluator_SysGen::cleanIPMILayer();
        BQMIPMISessionHandler::DestroyInstance();
    }

    ScopedWorkingDirectory directory;
    FakePlatform platform;
    FakeIPMIDevice device;
    CICContextEvaluator_SysGen evaluator{platform, device};
};

TEST_F(CICContextEvaluatorSysGenTest, NamesTheDetectedGenerationAndEveryOlderOne) {
    struct Case {
        std::vector<unsigned char> answer;
        int generation;
        size_t requests;
    };
    std::vector<Case> cases = {{{0xC1}, 0, 1},                       // final completion code: GenPre12G only
                               {{0xC1, 1, 2, 3, 4, 5, 0x50}, 0, 1},  // whatever the generation byte
                               {{0xCC}, 0, 1},
                               {{0xC0}, 0, 5}};  // transient: retried five times, 50 ms apart
    // The byte ranges are tested in order: unknown bytes above 0x15 fall through to generation 2.
    const int bytes[][2] = {{0x00, 0}, {0x0E, 0}, {0x0F, 1}, {0x12, 1}, {0x15, 1}, {0x16, 2}, {0x2F, 2},
                            {0x30, 3}, {0x32, 3}, {0x33, 2}, {0x3F, 2}, {0x40, 4}, {0x42, 4}, {0x43, 2},
                            {0x4F, 2}, {0x50, 5}, {0x51, 5}, {0x52, 5}, {0x53, 2}, {0x80, 2}, {0xFF, 2}};
    for (const auto& b : bytes)
        cases.push_back({FakeIPMIDevice::Generation(0x00, static_cast<unsigned char>(b[0])), b[1], 1});
    for (const auto& c : cases) {
        FakeIPMIDevice controller;
        FakePlatform shell;
        controller.defaultAnswer = c.answer;
        CICContextEvaluator_SysGen detector(shell, controller);
        Names names;
        const std::string name = ::testing::PrintToString(c.answer);
        EXPECT_EQ(detector.GetSysGenerationInventoryList(names), c.generation) << name;
        EXPECT_EQ(names, Oldest(c.generation + 1)) << name;
        ASSERT_EQ(controller.sent.size(), c.requests);
        EXPECT_EQ(std::vector<int>(controller.sent[0].head.begin(), controller.sent[0].head.begin() + 2),
                  std::vector<int>({0x30, 0xBD}));
        EXPECT_TRUE(controller.sent[0].data.empty());
        EXPECT_EQ(shell.sleeps, std::vector<unsigned long>(c.requests > 1 ? c.requests : 0, 50));
        EXPECT_EQ(controller.closed.size(), 1u);  // the library is released after each detection
    }
}

TEST_F(CICContextEvaluatorSysGenTest, FailuresSelectEveryGeneration) {
    device.failSend = true;
    Names names;
    EXPECT_EQ(evaluator.GetSysGenerationInventoryList(names), 1001);
    EXPECT_EQ(names, Oldest(6));

    device.openable.clear();
    testing::internal::CaptureStderr();
    EXPECT_EQ(evaluator.GetSystemGeneration(), 1001);
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "Can't open IPMI device\n");
    EXPECT_EQ(platform.sleeps, std::vector<unsigned long>(5, 1000));

    CICContextEvaluator_SysGen::cleanIPMILayer();
    FakePlatform noTools;  // fails before the device; the library left behind costs nothing more
    noTools.defaultStatus = FakePlatform::kNotFound;
    FakeIPMIDevice untouched;
    CICContextEvaluator_SysGen withoutTools(noTools, untouched);
    for (int i = 0; i < 2; ++i) EXPECT_EQ(withoutTools.GetSystemGeneration(), 1001);
    EXPECT_EQ(noTools.commands.size(), 6u);
    EXPECT_TRUE(untouched.opened.empty() && noTools.sleeps.empty());
}

}  // namespace

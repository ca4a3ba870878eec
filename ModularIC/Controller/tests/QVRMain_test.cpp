#include "QVRMain.h"

#include <gtest/gtest.h>

#include <stdexcept>

#include "CQVRICException.h"
#include "CSharedMemWriter.h"
#include "CollectionDir.h"
#include "FakeLockManager.h"
#include "FakeShmApi.h"
#include "QVRArgumentList.h"
#include "StreamCapture.h"
#include "TestArgv.h"

namespace {

class QVRMainTest : public ::testing::Test {
protected:
    void SetUp() override { QVRArgumentList::GetInstance()->Clear(); }
    void TearDown() override { QVRArgumentList::GetInstance()->Clear(); }

    int Main(std::vector<std::string> words, const QVRControllerFactory& factory) {
        words.insert(words.begin(), "sorvik");
        TestArgv args(words);
        StreamCapture err(stderr);
        StreamCapture out(stdout);
        const int status = QVRMain(args.argc(), args.argv(), factory);
        printed = out.Finish();
        errors = err.Finish();
        return status;
    }
    int Main(std::vector<std::string> words) {
        return Main(words, [this] {
            return std::unique_ptr<CQVRController>(new CQVRController(new FakeLockManager(record)));
        });
    }

    LockRecord record;
    std::string printed;
    std::string errors;
    FakeShmApi shm;
    ScopedShmApi scopedShm{&shm};
};

TEST_F(QVRMainTest, RunWithoutDevicesExitsZeroSilently) {
    CollectionDir dir;
    dir.Write("icconfig_new.json", R"({"SorVikConfig": {"Generation": []}})");
    EXPECT_EQ(Main({}), 0);
    EXPECT_EQ(errors, "");
    EXPECT_NE(printed.find("<SVMInventory"), std::string::npos);
    EXPECT_EQ(record.released, std::vector<int>{5});
}

TEST_F(QVRMainTest, ResultBecomesExitStatusAfterItsMessage) {
    record.lockResult = -1;
    EXPECT_EQ(Main({}), 3);
    EXPECT_EQ(errors,
              "ERROR: Another instance of the Inventory Collector is currently active. Terminating\n");
    EXPECT_EQ(printed, "");
}

TEST_F(QVRMainTest, RejectedCommandLinePrintsMessageAndUsage) {
    EXPECT_EQ(Main({"-outc"}), 23);
    EXPECT_EQ(errors, "One of the Option specified requires Argument");
    EXPECT_EQ(printed.rfind("\nUsage: sorvik [OPTION]...\n", 0), 0u);
}

TEST_F(QVRMainTest, NoInstanceAnswerExitsZeroAndReleasesAfterTheMessage) {
    record.lockResult = 8;
    record.releaseMarker = "<released>";
    EXPECT_EQ(Main({"-p"}), 0);
    EXPECT_EQ(errors, "No Instance of Inventory Collector is active \n<released>");
}

TEST_F(QVRMainTest, ProgressOfARunningInstanceExitsZeroWithoutMessage) {
    record.lockResult = -1;
    CSharedMemWriter().WriteToSharedMem(3, 1);
    EXPECT_EQ(Main({"-p"}), 0);
    EXPECT_EQ(errors, "");
    EXPECT_NE(printed.find("<SorVikProgress"), std::string::npos);
}

TEST_F(QVRMainTest, ICExceptionIsReportedAndExitsTwo) {
    record.onLock = [] { throw CQVRICException("qvr_x.cpp", 3, "Inner", "boom", "CQVRICException"); };
    record.releaseMarker = "<released>";
    EXPECT_EQ(Main({}), 2);
    EXPECT_EQ(
        errors.rfind("Caught IC Exception in main : CQVRICException - [boom]\n\t at Inner(qvr_x.cpp:3)]", 0),
        0u)
        << errors;
    EXPECT_EQ(errors.back(), '\n');
    EXPECT_EQ(errors.find("<released>"), std::string::npos);  // lock never taken
}

TEST_F(QVRMainTest, OtherExceptionsExitTwoSilently) {
    const std::vector<std::function<void()>> throwers = {
        [] { throw std::bad_alloc(); },
        [] { throw std::runtime_error("x"); },
    };
    for (const auto& thrower : throwers) {
        record = LockRecord();
        record.onLock = thrower;
        EXPECT_EQ(Main({}), 2);
        EXPECT_EQ(errors, "");
        EXPECT_EQ(printed, "");
    }
    EXPECT_EQ(Main({}, []() -> std::unique_ptr<CQVRController> { throw std::bad_alloc(); }), 2);
    EXPECT_EQ(Main({}, [] { return std::unique_ptr<CQVRController>(); }), 2);
    EXPECT_EQ(errors, "");
}

}  // namespace

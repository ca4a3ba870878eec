#include "CQVRController.h"

#include <gtest/gtest.h>

#include <regex>

#include "CQVRBadAllocException.h"
#include "CQVRICException.h"
#include "CSharedMemWriter.h"
#include "CollectionDir.h"
#include "FakeLockManager.h"
#include "FakeShmApi.h"
#include "QVRArgumentList.h"
#include "QVRICVersion.h"
#include "StreamCapture.h"
#include "TestArgv.h"

namespace {

class CQVRControllerTest : public ::testing::Test {
protected:
    void SetUp() override { QVRArgumentList::GetInstance()->Clear(); }
    void TearDown() override { QVRArgumentList::GetInstance()->Clear(); }

    // Runs one controller to its end and returns the run's result.
    unsigned int Run(std::vector<std::string> words) {
        words.insert(words.begin(), "sorvik");
        TestArgv args(words);
        StreamCapture err(stderr);
        StreamCapture out(stdout);
        unsigned int result;
        {
            CQVRController controller(new FakeLockManager(record));
            result = controller.GetICInventory(args.argc(), args.argv());
        }
        printed = out.Finish();
        errors = err.Finish();
        return result;
    }

    LockRecord record;
    std::string printed;
    std::string errors;
    // Progress never reaches the machine-wide segment from these tests.
    FakeShmApi shm;
    ScopedShmApi scopedShm{&shm};
};

std::string Usage() {
    char buffer[1024];
    std::snprintf(buffer, sizeof buffer, kQVRUsageFormat, "sorvik");
    return buffer;
}

TEST_F(CQVRControllerTest, HelpIsPrintedWithoutTakingTheLock) {
    EXPECT_EQ(Run({"--help", "-outc=x"}), 0u);
    EXPECT_EQ(printed, Usage());
    EXPECT_EQ(record.lockCalls, 0);
}

TEST_F(CQVRControllerTest, VersionIsPrintedWithoutTakingTheLock) {
    EXPECT_EQ(Run({"-v"}), 0u);
    EXPECT_EQ(printed, "\nVERSION: 21.09.200 (BLD_1155)\n");
    EXPECT_EQ(record.lockCalls, 0);
}

TEST_F(CQVRControllerTest, RejectedCommandLineEndsTheRunWithItsCodeAndPrintsNothing) {
    EXPECT_EQ(Run({"-outc"}), 23u);
    EXPECT_EQ(Run({"-bogus"}), 5u);
    EXPECT_EQ(printed, "");
    EXPECT_EQ(errors, "");
    EXPECT_EQ(record.lockCalls, 0);
}

struct LockRow {
    bool progress;
    int lockResult;
    unsigned int result;
    bool released;
};

TEST_F(CQVRControllerTest, LockStepBranches) {
    const std::vector<LockRow> rows = {
        {false, -1, 3, false},                       // another instance
        {false, -2, 4, false}, {true, 6, 49, true},  // nothing running: taken and given back
        {true, -2, 4, false},
    };
    for (const LockRow& row : rows) {
        record = LockRecord();
        record.lockResult = row.lockResult;
        QVRArgumentList::GetInstance()->Clear();
        const unsigned int result =
            Run(row.progress ? std::vector<std::string>{"-p"} : std::vector<std::string>{});
        EXPECT_EQ(result, row.result) << row.progress << " " << row.lockResult;
        EXPECT_EQ(record.lockCalls, 1);
        EXPECT_EQ(record.released, row.released ? std::vector<int>{row.lockResult} : std::vector<int>{})
            << row.progress << " " << row.lockResult;
        EXPECT_EQ(printed + errors, "");
    }
}

TEST_F(CQVRControllerTest, ProgressOfTheRunningInstanceIsWrittenAndAFinishedOneCleanedUp) {
    record.lockResult = -1;
    CSharedMemWriter().WriteToSharedMem(14, 9);
    EXPECT_EQ(Run({"-p"}), 48u);
    EXPECT_NE(printed.find(R"(totalInvComponents="14" completedInvComponents="9"/>)"), std::string::npos)
        << printed;
    EXPECT_TRUE(shm.Exists(0x94D553DF));
    EXPECT_EQ(record.released, std::vector<int>{});

    CSharedMemWriter().WriteToSharedMem(14, 14);
    EXPECT_EQ(Run({"-p"}), 48u);
    EXPECT_NE(printed.find(R"(totalInvComponents="14" completedInvComponents="14"/>)"), std::string::npos);
    EXPECT_FALSE(shm.Exists(0x94D553DF));
}

TEST_F(CQVRControllerTest, CollectionEndsWithOneWhenDevicesWereCollected) {
    CollectionDir dir;
    dir.WriteModule(R"(<SVMInventory><Device componentID="7" display="d">)"
                    R"(<Application componentType="FRMW" version="2" display="fw"/></Device></SVMInventory>)");
    EXPECT_EQ(Run({}), 1u);
    EXPECT_NE(printed.find(R"(<Device display="d" componentID="7">)"), std::string::npos) << printed;
    EXPECT_EQ(errors, "");
    EXPECT_EQ(record.released, std::vector<int>{5});
    FakeShmApi::Write counters;
    ASSERT_TRUE(shm.Read(0x94D553DF, &counters));
    EXPECT_EQ(counters.total, 1);
    EXPECT_EQ(counters.completed, 1);
}

TEST_F(CQVRControllerTest, CollectionWithoutDevicesEndsWithZero) {
    CollectionDir dir;
    dir.WriteModule(R"(<SVMInventory><SPStatus result="false"><Message>no disks</Message></SPStatus></SVMInventory>)");
    EXPECT_EQ(Run({}), 0u);
    EXPECT_NE(printed.find("<InventoryError"), std::string::npos) << printed;
    EXPECT_NE(printed.find("<Message>no disks</Message>"), std::string::npos);
}

TEST_F(CQVRControllerTest, MissingConfigurationThrowsWithEveryPhaseFrame) {
    CollectionDir dir;
    try {
        Run({});
        FAIL() << "no exception";
    } catch (const CQVRICException& exception) {
        const std::string frame = std::string(R"(\(qvr_ModularIC/Controller/src/CQVRController\.cpp:\d+\))");
        const std::string pattern =
            std::string(R"(CQVRICException - \[Error occurred during parsing icconfig\.json file\]\n\t at )") +
            "PopulateModuleList" + frame + R"(\]\n\t at PopulateModuleList)" + frame +
            R"(\]\n\t at GetICInventory)" + frame;
        EXPECT_TRUE(std::regex_match(exception.what(), std::regex(pattern))) << exception.what();
    }
    EXPECT_EQ(record.released, std::vector<int>{5});
}

TEST_F(CQVRControllerTest, ProgramNameIsFixed) { EXPECT_EQ(CQVRController::GetProgramName(), "sorvik"); }

const char kControllerSource[] = R"(qvr_ModularIC/Controller/src/CQVRController\.cpp)";

TEST_F(CQVRControllerTest, ExceptionGainsAFrameForEachPhase) {
    record.onLock = [] {
        throw CQVRICException("qvr_lock.cpp", 12, "ProcessLock", "broken", "CQVRICException");
    };
    TestArgv args({"sorvik"});
    CQVRController controller(new FakeLockManager(record));
    try {
        controller.GetICInventory(args.argc(), args.argv());
        FAIL() << "no exception";
    } catch (const CQVRICException& exception) {
        const std::string pattern =
            std::string(R"(CQVRICException - \[broken\]\n\t at ProcessLock\(qvr_lock\.cpp:12\))") +
            R"(\]\n\t at CheckForProgressOption\()" + kControllerSource + R"(:\d+\))" +
            R"(\]\n\t at GetICInventory\()" + kControllerSource + R"(:\d+\))";
        EXPECT_TRUE(std::regex_match(exception.what(), std::regex(pattern))) << exception.what();
    }
}

TEST_F(CQVRControllerTest, BadAllocBecomesABadAllocExceptionNamingEachPhase) {
    record.onLock = [] { throw std::bad_alloc(); };
    TestArgv args({"sorvik"});
    CQVRController controller(new FakeLockManager(record));
    try {
        controller.GetICInventory(args.argc(), args.argv());
        FAIL() << "no exception";
    } catch (const CQVRBadAllocException& exception) {
        const std::string pattern = std::string(R"(std::bad_alloc )") + kControllerSource +
                                    R"( CheckForProgressOption \d+\n )" + kControllerSource +
                                    R"( GetICInventory \d+\n)";
        EXPECT_TRUE(std::regex_match(exception.what(), std::regex(pattern))) << exception.what();
    }
}

TEST_F(CQVRControllerTest, LockHandleIsReleasedOnlyWhenHeld) {
    {
        CQVRController controller(new FakeLockManager(record));
        EXPECT_EQ(controller.GetLockFileID(), -1);
        controller.SetLockFileID(11);
    }
    EXPECT_EQ(record.released, std::vector<int>{11});
}

}  // namespace

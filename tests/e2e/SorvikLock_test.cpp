#include <gtest/gtest.h>
#include <unistd.h>

#include "E2EHelpers.h"

namespace {

const char kLockFile[] = "/var/lock/sorvik.tmp";
const char kAnotherInstance[] =
    "ERROR: Another instance of the Inventory Collector is currently active. Terminating\n";
const char kNoInstance[] = "No Instance of Inventory Collector is active \n";

// Every test here takes or holds the machine-wide lock file.
class SorvikLockTest : public ::testing::Test {
protected:
    void SetUp() override {
        ASSERT_FALSE(e2e::PathExists(kLockFile)) << kLockFile << " exists: is a collection running?";
    }
    void TearDown() override { ::unlink(kLockFile); }

    e2e::ProcessResult Run(std::vector<std::string> args) {
        e2e::RunOptions options;
        options.args = std::move(args);
        options.workingDirectory = dir.Path();
        return e2e::RunSorvik(options);
    }

    e2e::TempDir dir;
};

TEST_F(SorvikLockTest, SecondInstanceIsRefusedAndLeavesTheHoldersFile) {
    e2e::ExternalFileLock holder(kLockFile);
    const e2e::ProcessResult result = Run({});
    ASSERT_TRUE(result.exited);
    EXPECT_EQ(result.exitStatus, 3);
    EXPECT_EQ(result.err, kAnotherInstance);
    EXPECT_EQ(result.out, "");
    EXPECT_TRUE(e2e::PathExists(kLockFile));
}

TEST_F(SorvikLockTest, HelpAndCommandLineErrorsComeBeforeTheLock) {
    e2e::ExternalFileLock holder(kLockFile);
    const e2e::ProcessResult help = Run({"--help", "-outc=inv.xml"});
    EXPECT_EQ(help.exitStatus, 0);
    EXPECT_EQ(help.err, "");
    const e2e::ProcessResult wrong = Run({"-outf=xml"});
    EXPECT_EQ(wrong.exitStatus, 35);
    EXPECT_EQ(wrong.err, "Option argument is Invalid\n");
}

TEST_F(SorvikLockTest, ProgressWithoutARunningInstanceExitsZeroAndLeavesNoFile) {
    const e2e::ProcessResult result = Run({"-p"});
    ASSERT_TRUE(result.exited);
    EXPECT_EQ(result.exitStatus, 0);
    EXPECT_EQ(result.err, kNoInstance);
    EXPECT_EQ(result.out, "");
    EXPECT_FALSE(e2e::PathExists(kLockFile));
}

TEST_F(SorvikLockTest, StaleLockFileDoesNotBlock) {
    {
        e2e::ExternalFileLock holder(kLockFile);  // its process ends, the file stays
    }
    ASSERT_TRUE(e2e::PathExists(kLockFile));
    const e2e::ProcessResult progress = Run({"-p"});
    EXPECT_EQ(progress.exitStatus, 0);
    EXPECT_EQ(progress.err, kNoInstance);
    EXPECT_FALSE(e2e::PathExists(kLockFile));

    { e2e::ExternalFileLock holder(kLockFile); }
    const e2e::ProcessResult run = Run({});
    ASSERT_TRUE(run.exited);
    EXPECT_NE(run.exitStatus, 3);
    EXPECT_EQ(run.err.find("Another instance"), std::string::npos);
}

TEST_F(SorvikLockTest, LockFileIsGoneAfterARun) {
    const e2e::ProcessResult result = Run({});
    ASSERT_TRUE(result.exited);
    EXPECT_NE(result.exitStatus, 3);
    EXPECT_FALSE(e2e::PathExists(kLockFile));
}

}  // namespace

#include "CSharedMemWriter.h"

#include <gtest/gtest.h>

#include "FakeShmApi.h"
#include "QVRSharedMemGlobals.h"

namespace {

class CSharedMemWriterTest : public ::testing::Test {
protected:
    FakeShmApi fake;
    ScopedShmApi scope{&fake};
};

TEST_F(CSharedMemWriterTest, AsksForTheCollectorsKeySizeAndFlags) {
    CSharedMemWriter writer;
    ASSERT_TRUE(writer.WriteToSharedMem(14, 9));
    EXPECT_EQ(fake.lastKey, static_cast<key_t>(-1797958689));
    EXPECT_EQ(fake.lastSize, 8u);
    EXPECT_EQ(fake.lastFlags, IPC_CREAT | 0666);
    EXPECT_EQ(fake.lastFlags, 01666);
}

TEST_F(CSharedMemWriterTest, StoresTotalThenCompletedInNativeOrder) {
    CSharedMemWriter writer;
    ASSERT_TRUE(writer.WriteToSharedMem(14, 9));
    FakeShmApi::Write stored;
    ASSERT_TRUE(fake.Read(QVR_PROGRESS_SHM_KEY, &stored));
    EXPECT_EQ(stored.total, 14);
    EXPECT_EQ(stored.completed, 9);
    ASSERT_NE(eVKInvRefCount, nullptr);
    EXPECT_EQ(eVKInvRefCount[0], 14);
    EXPECT_EQ(eVKInvRefCount[1], 9);
}

TEST_F(CSharedMemWriterTest, AttachesAnewOnEveryCallAndNeverDetaches) {
    CSharedMemWriter writer;
    for (int i = 1; i <= 3; ++i) ASSERT_TRUE(writer.WriteToSharedMem(3, i));
    EXPECT_EQ(fake.getCalls, 3);
    EXPECT_EQ(fake.attachCalls, 3);
    EXPECT_EQ(fake.detachCalls, 0);
    EXPECT_EQ(fake.removeCalls, 0);
    FakeShmApi::Write stored;
    ASSERT_TRUE(fake.Read(QVR_PROGRESS_SHM_KEY, &stored));
    EXPECT_EQ(stored.completed, 3);
}

TEST_F(CSharedMemWriterTest, FailingGetReturnsFalseWithoutAttaching) {
    fake.failGet = true;
    CSharedMemWriter writer;
    EXPECT_FALSE(writer.WriteToSharedMem(1, 1));
    EXPECT_EQ(fake.attachCalls, 0);
}

TEST_F(CSharedMemWriterTest, FailingAttachReturnsFalseAndStoresNothing) {
    CSharedMemWriter writer;
    ASSERT_TRUE(writer.WriteToSharedMem(5, 1));
    fake.failAttach = true;
    EXPECT_FALSE(writer.WriteToSharedMem(5, 2));
    FakeShmApi::Write stored;
    ASSERT_TRUE(fake.Read(QVR_PROGRESS_SHM_KEY, &stored));
    EXPECT_EQ(stored.completed, 1);
}

TEST_F(CSharedMemWriterTest, ASegmentOfAnotherSizeIsRefused) {
    // A stale 4-byte segment under the key makes shmget fail with EINVAL.
    ASSERT_NE(fake.Get(QVR_PROGRESS_SHM_KEY, 4, IPC_CREAT | 0666), -1);
    CSharedMemWriter writer;
    EXPECT_FALSE(writer.WriteToSharedMem(1, 1));
}

}  // namespace

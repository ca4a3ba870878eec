#include "CSharedMemReader.h"

#include <gtest/gtest.h>

#include "CSharedMemWriter.h"
#include "FakeShmApi.h"
#include "QVRSharedMemGlobals.h"

namespace {

class CSharedMemReaderTest : public ::testing::Test {
protected:
    void TearDown() override {
        InvSMID = -1;
        eVKReader = nullptr;
    }
    FakeShmApi fake;
    ScopedShmApi scope{&fake};
};

TEST_F(CSharedMemReaderTest, NoCollectorEverRunCreatesAndReadsZeros) {
    CSharedMemReader reader;
    int* counters = reader.ReadData();
    ASSERT_NE(counters, nullptr);
    EXPECT_EQ(counters[0], 0);
    EXPECT_EQ(counters[1], 0);
    EXPECT_TRUE(fake.Exists(QVR_PROGRESS_SHM_KEY));
    EXPECT_EQ(fake.lastFlags, IPC_CREAT | 0666);
    EXPECT_EQ(fake.lastSize, 8u);
    EXPECT_EQ(counters, eVKReader);
    EXPECT_NE(InvSMID, -1);
}

TEST_F(CSharedMemReaderTest, ReadsWhatTheWriterStored) {
    CSharedMemWriter writer;
    ASSERT_TRUE(writer.WriteToSharedMem(14, 9));
    CSharedMemReader reader;
    int* counters = reader.ReadData();
    EXPECT_EQ(counters[0], 14);
    EXPECT_EQ(counters[1], 9);
}

TEST_F(CSharedMemReaderTest, CleanUpDetachesAndRemovesTheSegment) {
    CSharedMemWriter writer;
    ASSERT_TRUE(writer.WriteToSharedMem(14, 14));
    CSharedMemReader reader;
    int* counters = reader.ReadData();
    const int id = InvSMID;
    reader.CleanUP();
    EXPECT_EQ(fake.detachCalls, 1);
    ASSERT_EQ(fake.detached.size(), 1u);
    EXPECT_EQ(fake.detached[0], counters);
    ASSERT_EQ(fake.removed.size(), 1u);
    EXPECT_EQ(fake.removed[0], id);
    EXPECT_FALSE(fake.Exists(QVR_PROGRESS_SHM_KEY));
    EXPECT_EQ(eVKReader, nullptr);
    EXPECT_EQ(InvSMID, -1);
    // The next query starts from a fresh segment.
    counters = reader.ReadData();
    EXPECT_EQ(counters[0], 0);
    EXPECT_EQ(counters[1], 0);
}

TEST_F(CSharedMemReaderTest, FailingGetReadsZerosAndCleanUpTouchesNothing) {
    fake.failGet = true;
    CSharedMemReader reader;
    int* counters = reader.ReadData();
    ASSERT_NE(counters, nullptr);
    EXPECT_EQ(counters[0], 0);
    EXPECT_EQ(counters[1], 0);
    EXPECT_EQ(eVKReader, nullptr);
    EXPECT_EQ(fake.attachCalls, 0);
    reader.CleanUP();
    EXPECT_EQ(fake.detachCalls, 0);
    EXPECT_EQ(fake.removeCalls, 0);
}

TEST_F(CSharedMemReaderTest, FailingAttachReadsZerosButStillRemovesTheSegment) {
    fake.failAttach = true;
    CSharedMemReader reader;
    int* counters = reader.ReadData();
    ASSERT_NE(counters, nullptr);
    EXPECT_EQ(counters[0], 0);
    EXPECT_EQ(counters[1], 0);
    reader.CleanUP();
    EXPECT_EQ(fake.detachCalls, 0);
    EXPECT_EQ(fake.removeCalls, 1);
}

TEST_F(CSharedMemReaderTest, CleanUpWithoutReadIsHarmless) {
    CSharedMemReader reader;
    reader.CleanUP();
    EXPECT_EQ(fake.detachCalls, 0);
    EXPECT_EQ(fake.removeCalls, 0);
}

}  // namespace

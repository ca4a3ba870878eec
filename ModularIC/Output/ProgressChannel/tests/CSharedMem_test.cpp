// The writer and reader of the progress channel, on the fake shared memory.
#include <gtest/gtest.h>

#include "CSharedMemReader.h"
#include "CSharedMemWriter.h"
#include "FakeShmApi.h"
#include "QVRSharedMemGlobals.h"

namespace {

class SharedMemChannel : public ::testing::Test {
protected:
    FakeShmApi fake;
    CSharedMemWriter writer{fake};
    CSharedMemReader reader{fake};
};

TEST_F(SharedMemChannel, WriterAttachesAnewEachTimeNeverDetachesAndReaderSeesBothCounters) {
    reader.CleanUP();  // before any read: nothing to undo
    for (int i = 1; i <= 3; ++i) ASSERT_TRUE(writer.WriteToSharedMem(14, i));
    EXPECT_EQ(fake.lastKey, static_cast<key_t>(-1797958689));
    EXPECT_EQ(fake.lastSize, 8u);
    EXPECT_EQ(fake.lastFlags, 01666);
    EXPECT_EQ(fake.attachCalls, 3);
    EXPECT_EQ(fake.detachCalls + fake.removeCalls, 0);
    int* counters = reader.ReadData();
    EXPECT_EQ(fake.lastFlags, 01666);
    EXPECT_EQ(counters, eVKReader);
    EXPECT_EQ(counters[0], 14);
    EXPECT_EQ(counters[1], 3);
    const int id = InvSMID;
    reader.CleanUP();
    EXPECT_EQ(fake.detached, std::vector<const void*>{counters});
    EXPECT_EQ(fake.removed, std::vector<int>{id});
    EXPECT_EQ(eVKReader, nullptr);
    EXPECT_EQ(InvSMID, -1);
    counters = reader.ReadData();  // no collector: a fresh segment reading 0 and 0
    EXPECT_EQ(counters[0] + counters[1], 0);
    reader.CleanUP();
}

TEST_F(SharedMemChannel, FailuresStoreNothingReadAsZerosAndCleanUpOnlyUndoesWhatSucceeded) {
    ASSERT_TRUE(writer.WriteToSharedMem(5, 1));
    fake.failAttach = true;
    EXPECT_FALSE(writer.WriteToSharedMem(5, 2));
    int* counters = reader.ReadData();
    EXPECT_EQ(counters[0] + counters[1], 0);
    EXPECT_EQ(eVKReader, nullptr);
    reader.CleanUP();
    EXPECT_EQ(fake.detachCalls, 0);
    EXPECT_EQ(fake.removeCalls, 1);
    fake.failAttach = false;
    fake.failGet = true;
    const int attaches = fake.attachCalls;
    EXPECT_FALSE(writer.WriteToSharedMem(5, 3));
    counters = reader.ReadData();
    EXPECT_EQ(counters[0] + counters[1], 0);
    reader.CleanUP();
    EXPECT_EQ(fake.attachCalls, attaches);
    EXPECT_EQ(fake.removeCalls, 1);
    fake.failGet = false;  // a stale segment of another size under the key is refused
    ASSERT_NE(fake.Get(QVR_PROGRESS_SHM_KEY, 4, IPC_CREAT | 0666), -1);
    EXPECT_FALSE(writer.WriteToSharedMem(1, 1));
}

}  // namespace

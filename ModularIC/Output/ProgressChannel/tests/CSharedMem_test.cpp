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

// The segment itself, key, size and mode, is checked on the real one.
TEST_F(SharedMemChannel, CleanUpUndoesWhatTheReadGotOnce) {
    reader.CleanUP();  // before any read: nothing to undo
    ASSERT_TRUE(writer.WriteToSharedMem(14, 3));
    int* counters = reader.ReadData();
    const int id = InvSMID;
    reader.CleanUP();
    reader.CleanUP();  // nothing left: another run's segment is not removed
    EXPECT_EQ(fake.detached, std::vector<const void*>{counters});
    EXPECT_EQ(fake.removed, std::vector<int>{id});
}

TEST_F(SharedMemChannel, FailuresStoreNothingReadAsZerosAndCleanUpOnlyUndoesWhatSucceeded) {
    ASSERT_TRUE(writer.WriteToSharedMem(5, 1));
    fake.failAttach = true;
    EXPECT_FALSE(writer.WriteToSharedMem(5, 2));
    int* counters = reader.ReadData();
    EXPECT_EQ(counters[0] + counters[1], 0);
    EXPECT_EQ(eVKReader, nullptr);
    reader.CleanUP();
    EXPECT_TRUE(fake.detached.empty());
    EXPECT_EQ(fake.removed.size(), 1u);
    fake.failAttach = false;
    fake.failGet = true;
    const int attaches = fake.attachCalls;
    EXPECT_FALSE(writer.WriteToSharedMem(5, 3));
    counters = reader.ReadData();
    EXPECT_EQ(counters[0] + counters[1], 0);
    reader.CleanUP();
    EXPECT_EQ(fake.attachCalls, attaches);
    EXPECT_EQ(fake.removed.size(), 1u);
    fake.failGet = false;  // a stale segment of another size under the key is refused
    ASSERT_NE(fake.Get(QVR_PROGRESS_SHM_KEY, 4, IPC_CREAT | 0666), -1);
    EXPECT_FALSE(writer.WriteToSharedMem(1, 1));
}

}  // namespace

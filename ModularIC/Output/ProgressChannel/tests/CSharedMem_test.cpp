// The writer and reader of the progress channel: the segment itself on the
// machine's real System V segment under the collector's key (the executable
// runs isolated, so nothing else touches the key meanwhile), the failures on
// the fake shared memory.
#include <gtest/gtest.h>
#include <sys/ipc.h>
#include <sys/shm.h>

#include <cerrno>

#include "CSharedMemReader.h"
#include "CSharedMemWriter.h"
#include "FakeShmApi.h"
#include "QVRSharedMemGlobals.h"

namespace {

// Fixed: a progress query in another process finds the collector by it.
const key_t kKey = static_cast<key_t>(0x94D553DFu);

TEST(SharedMemRealTest, WriterAndReaderShareTheSegmentAndCleanUpRemovesIt) {
    const int stale = shmget(kKey, 0, 0);  // left by an earlier run, whatever its size
    if (stale != -1) shmctl(stale, IPC_RMID, nullptr);
    CSharedMemWriter writer;
    ASSERT_TRUE(writer.WriteToSharedMem(14, 9));

    struct shmid_ds info;
    const int id = shmget(kKey, 0, 0);
    ASSERT_EQ(shmctl(id, IPC_STAT, &info), 0);
    EXPECT_EQ(info.shm_segsz, 8u);
    EXPECT_EQ(info.shm_perm.mode & 0777, 0666u);

    CSharedMemReader reader;
    int* counters = reader.ReadData();
    EXPECT_EQ(counters[0], 14);
    EXPECT_EQ(counters[1], 9);
    EXPECT_EQ(InvSMID, id);

    ASSERT_TRUE(writer.WriteToSharedMem(14, 14));
    EXPECT_EQ(counters[1], 14);

    reader.CleanUP();
    errno = 0;
    EXPECT_EQ(shmget(kKey, 0, 0), -1);
    EXPECT_EQ(errno, ENOENT);

    // The next query finds no collector: a fresh segment reading 0 and 0.
    counters = reader.ReadData();
    EXPECT_EQ(counters[0] + counters[1], 0);
    reader.CleanUP();
    EXPECT_EQ(shmget(kKey, 0, 0), -1);
}

class SharedMemChannel : public ::testing::Test {
protected:
    FakeShmApi fake;
    CSharedMemWriter writer{fake};
    CSharedMemReader reader{fake};
};

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

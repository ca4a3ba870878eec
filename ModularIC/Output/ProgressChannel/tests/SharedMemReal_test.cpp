// Uses the machine's real System V segment under the collector's key; the test
// executable is labelled SERIAL so nothing else touches the key meanwhile.
#include <gtest/gtest.h>
#include <sys/ipc.h>
#include <sys/shm.h>

#include <cerrno>

#include "CSharedMemReader.h"
#include "CSharedMemWriter.h"
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

}  // namespace

#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdlib>
#include <fstream>

#include "CollectionSupport.h"

namespace collection {
namespace {

const char kFailed[] = "Configured program execution failure";

#if defined(__has_feature)
#if __has_feature(address_sanitizer)
#define SORVIK_ADDRESS_SANITIZER 1
#endif
#endif
#if defined(__SANITIZE_ADDRESS__) && !defined(SORVIK_ADDRESS_SANITIZER)
#define SORVIK_ADDRESS_SANITIZER 1
#endif
#ifdef SORVIK_ADDRESS_SANITIZER
// Its shadow memory and quarantine come on top of the collector's own.
const long kMemoryFactor = 2;
#else
const long kMemoryFactor = 1;
#endif

// The largest resident size of any child reaped so far, in bytes: here, the
// collector's (each test runs in a process of its own).
long PeakChildRssBytes() {
    struct rusage usage;
    getrusage(RUSAGE_CHILDREN, &usage);
    return usage.ru_maxrss * 1024L;
}

// A pids cgroup the collector can be moved into; empty when this machine has
// none that we may create.
std::string MakePidsCgroup(int limit) {
    for (const std::string root : {"/sys/fs/cgroup/pids", "/sys/fs/cgroup"}) {
        const std::string group = root + "/sorvik_faults_test";
        ::rmdir(group.c_str());
        if (::mkdir(group.c_str(), 0755) != 0) continue;
        std::ofstream(group + "/pids.max") << limit;
        if (e2e::PathExists(group + "/pids.max")) return group;
        ::rmdir(group.c_str());
    }
    return "";
}

class FaultsTest : public CollectionTest {};

TEST_F(FaultsTest, AModuleFloodingItsOutputIsKilledAtTheLimitAndTheOthersAreKept) {
    Install(GenericOnly({Module{"flood", "exec yes '<Device/>'\n"}, Module{"good", Emit(DeviceDoc("1"))}}));
    const e2e::ProcessResult result = Run({});
    ExpectResult(result, 1, InventoryXml(DeviceBody("1")) + ErrorXml({{"/flood", kFailed}}));
    // 256 MiB of captured output at most, and no copy of it beyond the buffer's growth.
    EXPECT_LT(PeakChildRssBytes(), kMemoryFactor * (700L << 20));
}

TEST_F(FaultsTest, AnythingButARegularFileAtTheLockPathReadsAsAnotherInstanceAtOnce) {
    Install(GenericOnly({Module{"m", Note("ran") + Emit(DeviceDoc("1"))}}));
    for (const bool fifo : {true, false}) {
        SCOPED_TRACE(fifo ? "FIFO" : "directory");
        ASSERT_EQ(fifo ? ::mkfifo(kLockFile, 0666) : ::mkdir(kLockFile, 0777), 0);
        ExpectResult(Run({}), 3, "", kAnotherInstance);
        // A progress query must not hang on it either.
        const e2e::ProcessResult progress = Run({"-progress"});
        EXPECT_FALSE(progress.timedOut);
        EXPECT_EQ(::remove(kLockFile), 0);
    }
    EXPECT_TRUE(Ran().empty());
}

TEST_F(FaultsTest, ModulesThatNoThreadCouldRunAreFailuresNotSilence) {
    // The collector's main thread and its interrupt thread fit; no worker does.
    const std::string group = MakePidsCgroup(2);
    if (group.empty()) GTEST_SKIP() << "no pids cgroup can be created here";
    Install(GenericOnly({Module{"a", Note("a") + Emit(DeviceDoc("1"))}, Module{"b", Emit(DeviceDoc("2"))}}));
    e2e::RunOptions options;
    options.workingDirectory = dir.Path();
    // A leak check at exit needs a thread of its own, which the limit forbids.
    const char* asan = std::getenv("ASAN_OPTIONS");
    options.environment["ASAN_OPTIONS"] = std::string(asan != nullptr ? asan : "") + ":detect_leaks=0";
    options.args = {"-c", "echo $$ > '" + group + "/cgroup.procs' && exec \"$0\" \"$@\"", IPMISIM_RUN_SCRIPT,
                    e2e::SorvikBinary()};
    const e2e::ProcessResult result = e2e::RunProgram("/bin/sh", options);
    ::rmdir(group.c_str());
    ExpectResult(result, 0, InventoryXml("") + ErrorXml({{"/a", kFailed}, {"/b", kFailed}}));
    EXPECT_TRUE(Ran().empty());
}

}  // namespace
}  // namespace collection

#include <sys/mount.h>
#include <sys/stat.h>
#include <unistd.h>

#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <fstream>

#include "CollectionSupport.h"

namespace collection {
namespace {

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

// A pids cgroup the collector can be moved into; empty when this machine has
// none that we may create.
std::string MakePidsCgroup(int limit) {
    for (const std::string root : {"/sys/fs/cgroup/pids", "/sys/fs/cgroup"}) {
        const std::string group = root + "/sorvik_faults_test";
        ::rmdir(group.c_str());
        if (::mkdir(group.c_str(), 0755) != 0) continue;
        std::ofstream(group + "/pids.max") << limit;
        if (PathExists(group + "/pids.max")) return group;
        ::rmdir(group.c_str());
    }
    return "";
}

using FaultsTest = CollectionTest;

TEST_F(FaultsTest, AModuleFloodingItsOutputIsKilledAtTheLimitAndTheOthersAreKept) {
    Install(GenericOnly({Module{"flood", "exec yes '<Device/>'\n"}, Module{"good", Emit(DeviceDoc("1"))}}));
    const ProcessResult result = Run({});
    ExpectResult(result, 1, InventoryXml(DeviceBody("1")) + ErrorXml({{"/flood", kFailed}}));
    // 1.25 GiB of captured output at most, held once: a buffer that doubled as
    // it grew would hold up to twice that while copying.
    EXPECT_LT(result.peakRssBytes, kMemoryFactor * (1600L << 20));
}

TEST_F(FaultsTest, AHostileDocumentCostsTimeAndMemoryLinearInItsSize) {
    // 150 kB that would expand to a gigabyte: one 100 kB entity, 10,000 references.
    const std::string hostile =
        "printf '<!DOCTYPE SVMInventory [<!ENTITY e \"'\n"
        "head -c 100000 /dev/zero | tr '\\0' e\n"
        "printf '\">]><SVMInventory><Device componentID=\"9\" display=\"d\">"
        "<Application componentType=\"FRMW\" display=\"a\" version=\"'\n"
        "i=0; while [ $i -lt 10000 ]; do printf '&e;'; i=$((i+1)); done\n"
        "printf '\"/></Device></SVMInventory>'\n";
    Install(GenericOnly({Module{"hostile", hostile}, Module{"good", Emit(DeviceDoc("1"))}}));
    const auto start = std::chrono::steady_clock::now();
    const ProcessResult result = Run({});
    EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(20));
    ExpectResult(
        result, 1,
        InventoryXml(DeviceBody("1")) + ErrorXml({{"/hostile", "Invalid inventory XML root element."}}));
    EXPECT_LT(result.peakRssBytes, kMemoryFactor * (200L << 20));
}

TEST_F(FaultsTest, AnythingButARegularFileAtTheLockPathReadsAsAnotherInstanceAtOnce) {
    Install(GenericOnly({Module{"m", Note("ran") + Emit(DeviceDoc("1"))}}));
    for (const bool fifo : {true, false}) {
        SCOPED_TRACE(fifo ? "FIFO" : "directory");
        ASSERT_EQ(fifo ? ::mkfifo(kLockFile, 0666) : ::mkdir(kLockFile, 0777), 0);
        ExpectResult(Run({}), 3, "", kAnotherInstance);
        // A progress query must not hang on it either.
        const ProcessResult progress = Run({"-progress"});
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
    // A leak check at exit needs a thread of its own, which the limit forbids.
    const char* asan = std::getenv("ASAN_OPTIONS");
    const ProcessResult result =
        Run({}, {{"ASAN_OPTIONS", std::string(asan != nullptr ? asan : "") + ":detect_leaks=0"}},
            "echo $$ > '" + group + "/cgroup.procs' && exec \"$@\"");
    ::rmdir(group.c_str());
    ExpectResult(result, 0, InventoryXml("") + ErrorXml({{"/a", kFailed}, {"/b", kFailed}}));
    EXPECT_TRUE(Ran().empty());
}

TEST_F(FaultsTest, AFailedWriteIsAFailureWithAMessageAndNeverATruncatedDocument) {
    // More than a pipe holds, and more than the small file system below.
    std::string script = "echo '<SVMInventory>'\n";
    for (int i = 0; i < 2000; ++i)
        script +=
            "echo '<Device componentID=\"" + std::to_string(i) +
            "\" display=\"d\"><Application componentType=\"FRMW\" version=\"1\" display=\"a\"/></Device>'\n";
    script += "echo '<SPStatus result=\"false\"><Message>half done</Message></SPStatus></SVMInventory>'\n";
    Install(GenericOnly({Module{"m", script}}));
    const std::string small = dir.PathOf("small");
    std::filesystem::create_directory(small);
    ASSERT_EQ(::mount("sorvik-test", small.c_str(), "tmpfs", 0, "size=16k"), 0);
    dir.WriteFile("small/inv.xml", "the previous inventory");
    const std::string noSpace = "Unable to write the inventory: No space left on device]";
    const struct {
        const char* name;
        std::string shell;
        Args args;
        int status;
        std::string err;  // a part of standard error
    } rows[] = {
        {"inventory to a full device", "exec \"$@\"", {"-outc=/dev/full"}, 2, noSpace},
        {"error document to a full device",
         "exec \"$@\"",
         {"-outc=" + dir.PathOf("inv.xml"), "-logc=/dev/full"},
         2,
         noSpace},
        {"JSON to a full device", "exec \"$@\"", {"-outf=JSON", "-outc=/dev/full"}, 2, noSpace},
        {"standard output on a full device", "exec \"$@\" > /dev/full", {}, 2, noSpace},
        {"a file system that fills up", "exec \"$@\"", {"-outc=" + small + "/inv.xml"}, 2, noSpace},
        // Ended as SIGPIPE would end it, but with the lock released.
        {"standard output closed by its reader",
         "(\"$@\"; echo $? >&2) | head -c 100 > /dev/null",
         {},
         0,
         "141\n"},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        const ProcessResult result = Run(row.args, {}, row.shell);
        EXPECT_EQ(result.exitStatus, row.status);
        EXPECT_NE(result.err.find(row.err), std::string::npos) << result.err;
        EXPECT_EQ(result.err.find("I/O error"), std::string::npos) << "libxml2 spoke: " << result.err;
        EXPECT_FALSE(PathExists(kLockFile));
    }
    EXPECT_EQ(dir.ReadFile("small/inv.xml"), "the previous inventory");
    std::vector<std::string> names;  // no temporary file left
    for (const auto& entry : std::filesystem::directory_iterator(small))
        names.push_back(entry.path().filename());
    EXPECT_EQ(names, std::vector<std::string>{"inv.xml"});
    ::umount(small.c_str());
}

}  // namespace
}  // namespace collection

#include <chrono>
#include <future>
#include <regex>
#include <thread>

#include "CollectionSupport.h"

namespace collection {
namespace {

using std::chrono::milliseconds;
using std::chrono::steady_clock;

const char kDevice[] =
    "<SVMInventory><Device componentID=\"%s\" display=\"D\">"
    "<Application componentType=\"FRMW\" version=\"1\" display=\"A\"/></Device></SVMInventory>";

std::string DeviceDoc(const std::string& id) {
    std::string doc = kDevice;
    return doc.replace(doc.find("%s"), 2, id);
}

class ProgressSerial : public CollectionTest {
protected:
    // Two quick modules and one that holds the run until "release" exists
    // (a few seconds at most, should the test fail before releasing it).
    void InstallHeldRun() const {
        Module slow{"slow", "touch '" + dir.PathOf("started") + "'\n" + "i=0\nwhile [ ! -e '" +
                                dir.PathOf("release") +
                                "' ] && [ $i -lt 80 ]; do sleep 0.05; i=$((i+1)); done\n" +
                                Emit(DeviceDoc("3"))};
        Config config;
        // Install steps report nothing and are not counted.
        config.preInstall = {Module{"pre", "exit 0\n"}};
        config.postInstall = {Module{"post", "exit 0\n"}};
        config.generations = {
            {"Generic",
             {Module{"fast1", Emit(DeviceDoc("1"))}, slow, Module{"fast2", Emit(DeviceDoc("2"))}}}};
        Install(config);
    }
    bool WaitFor(const std::string& relative) const {
        const auto deadline = steady_clock::now() + std::chrono::seconds(15);
        while (!dir.Exists(relative)) {
            if (steady_clock::now() > deadline) return false;
            std::this_thread::sleep_for(milliseconds(20));
        }
        return true;
    }
    // Queries until the completed count reaches the given one; the last answer.
    e2e::ProcessResult QueryUntilCompleted(int completed) const {
        static const std::regex counters("completedInvComponents=\"([0-9]+)\"");
        const auto deadline = steady_clock::now() + std::chrono::seconds(15);
        for (;;) {
            e2e::ProcessResult result = Run({"-p"});
            std::smatch match;
            if (!std::regex_search(result.out, match, counters) || std::stoi(match[1]) == completed ||
                steady_clock::now() > deadline)
                return result;
            std::this_thread::sleep_for(milliseconds(50));
        }
    }
};

TEST_F(ProgressSerial, QueriesFollowARunAndItsSegment) {
    InstallHeldRun();
    std::future<e2e::ProcessResult> run = std::async(std::launch::async, [this] {
        return Run({"-outc=" + dir.PathOf("inv.xml"), "-enc=UTF-8"});
    });
    struct Releaser {
        const e2e::TempDir& dir;
        ~Releaser() { dir.WriteFile("release", ""); }
    } releaser{dir};
    ASSERT_TRUE(WaitFor("started"));

    // While the run is held: its counters, in either destination.
    const e2e::ProcessResult during = QueryUntilCompleted(2);
    EXPECT_EQ(during.exitStatus, 0);
    EXPECT_EQ(during.err, "");
    EXPECT_EQ(NormalizeTimestamps(during.out), ProgressXml(3, 2));
    const e2e::ProcessResult toFile = Run({"-progress", "-outc=" + dir.PathOf("progress.xml")});
    EXPECT_EQ(toFile.exitStatus, 0);
    EXPECT_EQ(toFile.out, "");
    EXPECT_EQ(NormalizeTimestamps(Utf16LeToUtf8(dir.ReadFile("progress.xml"))), ProgressXml(3, 2, "UTF-16"));
    EXPECT_TRUE(ProgressSegmentExists());

    const e2e::ProcessResult second = Run({});
    EXPECT_EQ(second.exitStatus, 3);
    EXPECT_EQ(second.err, kAnotherInstance);
    EXPECT_EQ(second.out, "");

    dir.WriteFile("release", "");
    const e2e::ProcessResult finished = run.get();
    ASSERT_TRUE(finished.exited) << finished.err;
    EXPECT_EQ(finished.exitStatus, 1) << finished.err;
    EXPECT_EQ(finished.err, "");
    EXPECT_FALSE(e2e::PathExists(kLockFile));

    // Nothing running: no counters are read, and the finished run's stay.
    const e2e::ProcessResult idle = Run({"-p"});
    EXPECT_EQ(idle.exitStatus, 0);
    EXPECT_EQ(idle.err, kNoInstance);
    EXPECT_EQ(idle.out, "");
    EXPECT_FALSE(e2e::PathExists(kLockFile));
    EXPECT_TRUE(ProgressSegmentExists());

    // Another holder of the lock: the finished counters once, then a fresh 0 and 0.
    e2e::ExternalFileLock holder(kLockFile);
    const e2e::ProcessResult last = Run({"-p"});
    EXPECT_EQ(last.exitStatus, 0);
    EXPECT_EQ(last.err, "");
    EXPECT_EQ(NormalizeTimestamps(last.out), ProgressXml(3, 3));
    EXPECT_FALSE(ProgressSegmentExists());
    const e2e::ProcessResult fresh = Run({"-p"});
    EXPECT_EQ(fresh.exitStatus, 0);
    EXPECT_EQ(NormalizeTimestamps(fresh.out), ProgressXml(0, 0));
    EXPECT_FALSE(ProgressSegmentExists());
    holder.Release();
    ::unlink(kLockFile);
}

TEST_F(ProgressSerial, DroppedOutputIsNotCountedSoTheSegmentStays) {
    Config config;
    config.generations = {
        {"Generic",
         {Module{"inv", Emit(DeviceDoc("1"))}, Module{"text", "echo plain text\n"}, Module{"empty", ""}}}};
    Install(config);
    const e2e::ProcessResult run = Run({"-outc=" + dir.PathOf("inv.xml")});
    ASSERT_TRUE(run.exited) << run.err;
    EXPECT_EQ(run.exitStatus, 1) << run.err;

    e2e::ExternalFileLock holder(kLockFile);
    for (int query = 0; query < 2; ++query) {
        SCOPED_TRACE(query);
        const e2e::ProcessResult result = Run({"-p"});
        EXPECT_EQ(result.exitStatus, 0);
        EXPECT_EQ(NormalizeTimestamps(result.out), ProgressXml(3, 2));
        EXPECT_TRUE(ProgressSegmentExists());
    }
    holder.Release();
    ::unlink(kLockFile);
}

}  // namespace
}  // namespace collection

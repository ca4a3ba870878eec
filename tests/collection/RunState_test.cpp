#include <chrono>
#include <future>
#include <regex>
#include <thread>

#include "CollectionSupport.h"

namespace collection {
namespace {

class RunStateTest : public CollectionTest {};

TEST_F(RunStateTest, ExitStatusIsTwoWithTheExceptionTextWhenTheConfigurationCannotBeRead) {
    const std::regex text(
        "Caught IC Exception in main : CQVRICException - \\[Error occurred during parsing icconfig\\.json "
        "file\\]"
        "\n\t at PopulateModuleList\\(qvr[^:()]*:[0-9]+\\)(\\]\n\t at [A-Za-z]+\\(qvr[^:()]*:[0-9]+\\))*"
        "\\]\n\t at GetICInventory\\(qvr[^:()]*:[0-9]+\\)\n");
    for (const bool missing : {true, false}) {
        SCOPED_TRACE(missing ? "missing" : "malformed");
        if (!missing) WriteConfigText("{\"SorVikConfig\": {");
        const ProcessResult result = Run({});
        EXPECT_EQ(result.exitStatus, 2);
        EXPECT_EQ(result.out, missing ? "Error! Incorrect file!!\n" : "");
        EXPECT_TRUE(std::regex_match(result.err, text)) << result.err;
    }
    // Without module sections there is nothing to run.
    WriteConfigText("{\"Other\": {\"Generation\": []}}");
    ExpectResult(Run({}), 0, InventoryXml(""));
}

TEST_F(RunStateTest, WhileARunIsHeldProgressShowsItsCountersAndASecondInstanceRunsNothing) {
    // slow holds the run until "release" exists.
    Module slow{"slow", "touch '" + dir.PathOf("started") + "'\ni=0\nwhile [ ! -e '" + dir.PathOf("release") +
                            "' ] && [ $i -lt 200 ]; do sleep 0.05; i=$((i+1)); done\n" +
                            Emit(DeviceDoc("3"))};
    Config config =
        GenericOnly({Module{"fast1", Emit(DeviceDoc("1"))}, slow, Module{"fast2", Emit(DeviceDoc("2"))}});
    config.preInstall = {Module{"pre", Note("pre")}};  // install steps are not counted
    Install(config);
    std::future<ProcessResult> run =
        std::async(std::launch::async, [this] { return Run({"-outc=" + dir.PathOf("inv.xml")}); });
    struct Releaser {
        const TempDir& dir;
        ~Releaser() { dir.WriteFile("release", ""); }
    } releaser{dir};
    for (int i = 0; i < 300 && !dir.Exists("started"); ++i)
        std::this_thread::sleep_for(std::chrono::milliseconds(50));
    ASSERT_TRUE(dir.Exists("started"));

    // The quick modules may still be finishing.
    ProcessResult progress;
    for (int i = 0; i < 200 && NormalizeTimestamps(progress.out) != ProgressXml(3, 2); ++i) {
        std::this_thread::sleep_for(std::chrono::milliseconds(i ? 50 : 0));
        progress = Run({"-progress"});
    }
    ExpectResult(progress, 0, ProgressXml(3, 2));
    ExpectResult(Run({"-outc=" + dir.PathOf("second.xml")}), 3, "", kAnotherInstance);
    EXPECT_FALSE(dir.Exists("second.xml"));
    EXPECT_EQ(Ran(), Args{"pre"});

    dir.WriteFile("release", "");
    ExpectResult(run.get(), 1, "");
}

TEST_F(RunStateTest,
       AfterARunProgressReportsNoInstanceEqualCountersRemoveTheSegmentAndAStaleLockBlocksNothing) {
    for (const bool dropped : {false, true}) {
        SCOPED_TRACE(dropped ? "a dropped output" : "every output counted");
        Install(GenericOnly({Module{"dev", Emit(DeviceDoc("1"))},
                             Module{"other", dropped ? "echo plain\n" : Emit(DeviceDoc("2"))}}));
        EXPECT_EQ(Run({"-outc=" + dir.PathOf("inv.xml")}).exitStatus, 1);

        ExpectResult(Run({"-progress"}), 0, "", "No Instance of Inventory Collector is active \n");
        EXPECT_FALSE(PathExists(kLockFile));
        EXPECT_TRUE(ProgressSegmentExists());

        // With the lock held elsewhere the finished run's counters are read once.
        FileLock holder(kLockFile);
        for (int query = 0; query < 2; ++query) {
            ExpectResult(Run({"-p"}), 0,
                         query == 0 || dropped ? ProgressXml(2, dropped ? 1 : 2) : ProgressXml(0, 0));
            EXPECT_EQ(ProgressSegmentExists(), dropped);
        }
        // Its file stays behind without a lock on it, blocking neither the
        // next run nor a progress query.
        holder.Release();
    }
    ExpectResult(Run({"-p"}), 0, "", "No Instance of Inventory Collector is active \n");
    ::unlink(kLockFile);
}

}  // namespace
}  // namespace collection

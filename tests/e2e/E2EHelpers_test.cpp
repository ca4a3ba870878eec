#include "E2EHelpers.h"

#include <gtest/gtest.h>
#include <signal.h>

#include <stdexcept>

namespace {

e2e::ProcessResult Shell(const std::string& script, e2e::RunOptions options = e2e::RunOptions()) {
    options.args = {"-c", script};
    return e2e::RunProgram("/bin/sh", options);
}

TEST(E2EHelpersTest, ReadsLargeOutputOnBothStreamsApart) {
    // Each stream carries far more than a pipe holds, so a reader of one stream
    // at a time would block the child.
    const e2e::ProcessResult result = Shell(
        "i=0; while [ $i -lt 64 ]; do head -c 65536 /dev/zero; head -c 32768 /dev/zero >&2; i=$((i+1)); "
        "done; exit 7");
    ASSERT_TRUE(result.exited);
    EXPECT_EQ(result.exitStatus, 7);
    EXPECT_EQ(result.out.size(), 64u * 65536u);
    EXPECT_EQ(result.err.size(), 64u * 32768u);
}

TEST(E2EHelpersTest, WorkingDirectoryEnvironmentAndInput) {
    e2e::TempDir dir;
    dir.WriteFile("sub/run.sh", "#!/bin/sh\nprintf '%s|%s|' \"$SORVIK_E2E_VALUE\" \"$(pwd)\"\ncat\n", 0755);
    e2e::RunOptions options;
    options.workingDirectory = dir.PathOf("sub");
    options.environment["SORVIK_E2E_VALUE"] = "given";
    const e2e::ProcessResult result = e2e::RunProgram(dir.PathOf("sub/run.sh"), options);
    EXPECT_EQ(result.exitStatus, 0);
    EXPECT_EQ(result.out, "given|" + dir.PathOf("sub") + "|");
    EXPECT_EQ(dir.ReadFile("sub/run.sh").substr(0, 9), "#!/bin/sh");
}

TEST(E2EHelpersTest, TimeoutKillsTheWholeGroup) {
    e2e::RunOptions options;
    options.timeout = std::chrono::milliseconds(200);
    // The background sleep keeps standard output open after the shell is gone.
    const e2e::ProcessResult result = Shell("sleep 30 & echo started; wait", options);
    EXPECT_TRUE(result.timedOut);
    EXPECT_FALSE(result.exited);
    EXPECT_EQ(result.termSignal, SIGKILL);
    EXPECT_EQ(result.out, "started\n");
}

TEST(E2EHelpersTest, MissingProgramThrows) {
    EXPECT_THROW(e2e::RunProgram("/nonexistent/program", e2e::RunOptions()), std::runtime_error);
}

TEST(E2EHelpersTest, TempDirIsRemovedWithItsContents) {
    std::string path;
    {
        e2e::TempDir dir;
        path = dir.Path();
        dir.WriteFile("a/b/c.txt", "x");
        EXPECT_TRUE(dir.Exists("a/b/c.txt"));
    }
    EXPECT_FALSE(e2e::PathExists(path));
}

}  // namespace

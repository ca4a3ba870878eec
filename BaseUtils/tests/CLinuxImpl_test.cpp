#include "CLinuxImpl.h"

#include <gtest/gtest.h>
#include <sys/wait.h>

namespace {

TEST(CLinuxImplTest, TheShellAnswersItsRawWaitStatusAndOnlyStandardOutputIsRead) {
    CLinuxImpl platform;
    const int status = platform.RunShellCommand("exit 3", true);
    EXPECT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 3) << status;
    std::string output;
    EXPECT_EQ(platform.ReadShellOutput("echo out; echo err >&2", output), 0);
    EXPECT_EQ(output, "out\n");
}

}  // namespace

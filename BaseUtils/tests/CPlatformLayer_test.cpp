#include "CPlatformLayer.h"

#include <gtest/gtest.h>
#include <sys/wait.h>

namespace {

TEST(CPlatformLayerTest, TheRealShellAnswersItsRawWaitStatus) {
    const int status = CPlatformLayer::RunShellCommand("exit 3");
    EXPECT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 3) << status;
    std::string output;
    EXPECT_EQ(CPlatformLayer::ReadShellOutput("echo out; echo err >&2", output), 0);
    EXPECT_EQ(output, "out\n");
}

}  // namespace

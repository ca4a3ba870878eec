#include "CPlatformLayer.h"

#include <gtest/gtest.h>
#include <sys/wait.h>

#include "BaseUtilsTestSupport.h"

namespace {

TEST(CPlatformLayerTest, ForwardsToTheInstalledFakeThenToTheRealShellWithItsRawWaitStatus) {
    {
        FakePlatformImpl fake;
        fake.shellStatus = 7;
        EXPECT_EQ(CPlatformLayer::RunShellCommand("anything"), 7);
        EXPECT_FALSE(CPlatformLayer::setCurrentDirectory("/"));
        EXPECT_EQ(CPlatformLayer::getCurrentDirectory(), "/fake");
        CPlatformLayer::SleepMilliseconds(1500);
        EXPECT_EQ(fake.commands, std::vector<std::string>{"anything"});
        EXPECT_EQ(fake.sleeps, std::vector<unsigned long>{1500});
    }
    const int status = CPlatformLayer::RunShellCommand("exit 3");
    EXPECT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 3) << status;
}

}  // namespace

#include "CPlatformLayer.h"

#include <gtest/gtest.h>
#include <sys/wait.h>

#include <string>

#include "BaseUtilsTestSupport.h"
#include "CLinuxImpl.h"

namespace {

TEST(CPlatformLayerTest, ForwardsToTheInstalledImplementationAndRestoresTheRealOne) {
    FakePlatformImpl fake;
    fake.shellStatus = 7;
    {
        ScopedPlatformImpl installed(&fake);
        EXPECT_EQ(CPlatformLayer::RunShellCommand("anything"), 7);
        EXPECT_TRUE(CPlatformLayer::setCurrentDirectory("/some/where"));
        EXPECT_EQ(CPlatformLayer::getCurrentDirectory(), "/some/where");
        CPlatformLayer::SleepMilliseconds(1500);
    }
    ASSERT_EQ(fake.commands.size(), 1u);
    EXPECT_EQ(fake.commands[0], "anything");
    ASSERT_EQ(fake.sleeps.size(), 1u);
    EXPECT_EQ(fake.sleeps[0], 1500u);
    // The real implementation is back: this command runs.
    EXPECT_EQ(CPlatformLayer::RunShellCommand("exit 0"), 0);
}

TEST(CPlatformLayerTest, NullRestoresTheRealImplementation) {
    FakePlatformImpl fake;
    IPlatformImpl* real = CPlatformLayer::SetImplForTesting(&fake);
    EXPECT_EQ(CPlatformLayer::SetImplForTesting(nullptr), &fake);
    EXPECT_EQ(CPlatformLayer::SetImplForTesting(real), real);
}

TEST(CLinuxImplTest, ShellCommandReturnsTheRawWaitStatus) {
    CLinuxImpl impl;
    const int status = impl.RunShellCommand("exit 3");
    ASSERT_TRUE(WIFEXITED(status));
    EXPECT_EQ(WEXITSTATUS(status), 3);
}

TEST(CLinuxImplTest, ChangesAndReadsTheWorkingDirectory) {
    CLinuxImpl impl;
    const std::string start = impl.GetCurrentDirectory();
    ASSERT_FALSE(start.empty());
    ScopedTempDir dir;
    ASSERT_TRUE(impl.SetCurrentDirectory(dir.Path()));
    EXPECT_EQ(impl.GetCurrentDirectory(), dir.Path());
    EXPECT_FALSE(impl.SetCurrentDirectory(dir.File("missing")));
    EXPECT_EQ(impl.GetCurrentDirectory(), dir.Path());
    ASSERT_TRUE(impl.SetCurrentDirectory(start));
}

}  // namespace

#include "QVRCProcess.h"

#include <gtest/gtest.h>

#include <chrono>
#include <fstream>
#include <thread>

#include "InvokerTestHelpers.h"

namespace {

using invoker_test::WriteScript;

// Real script modules, run from temporary directories.
class QVRCProcessTest : public ::testing::Test {
protected:
    void TearDown() override { EXPECT_TRUE(invoker_test::HasNoChildren()) << "a child was left unreaped"; }

    // Runs a script with the given time limit; output and seconds taken.
    std::pair<std::string, double> Run(const std::string& body, unsigned int timeout,
                                       const std::string& args = "") {
        WriteScript(dir.path(), "mod.sh", body);
        const auto start = std::chrono::steady_clock::now();
        QVRCProcess process(dir.path(), "mod.sh" + args, timeout, true, true);
        EXPECT_TRUE(process.Execute());
        return {process.GetOutput(),
                std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count()};
    }

    ConfigDir dir;
};

TEST_F(QVRCProcessTest, RunsInTheModuleDirectoryWithArguments) {
    EXPECT_EQ(dir.path() + "\nargs:a,b\n", Run("pwd\necho \"args:$1,$2\"\n", 10, " a b").first);
    EXPECT_FALSE(QVRCProcess(dir.path(), "", 10, true, true).Execute());  // an empty command starts nothing
    // An empty directory means the current one, which the fixture made the module's.
    WriteScript(dir.path(), "pwd.sh", "pwd\n");
    QVRCProcess here("", "pwd.sh", 10, true, false);
    EXPECT_TRUE(here.Execute());
    EXPECT_EQ(dir.path() + "\n", here.GetOutput());
}

TEST_F(QVRCProcessTest, LongLinesAndLargeOutputArriveUnchanged) {
    std::string expected;
    for (size_t length : {2046u, 2047u, 2048u, 2049u, 10000u, 0u})
        expected += std::string(length, static_cast<char>('a' + length % 26)) + "x\n";
    expected += std::string(1 << 20, 'z');  // no final line end
    std::ofstream(dir.Sub("data.txt"), std::ios::binary) << expected;
    const std::string output = Run("cat data.txt\n", 20).first;
    EXPECT_TRUE(output == expected) << "got " << output.size() << " bytes, expected " << expected.size();
}

TEST_F(QVRCProcessTest, OverrunningModulesAreKilledAtTheLimitAndTheirOutputDiscarded) {
    const char* const scripts[] = {
        "echo partial\nsleep 30 &\necho $! > child.pid\nwait\necho late\n",
        // Exits at once, but its background child keeps the pipe open.
        "(sleep 30; echo late) &\necho $! > child.pid\necho partial\nexit 0\n",
    };
    for (const char* script : scripts) {
        SCOPED_TRACE(script);
        testing::internal::CaptureStderr();
        const auto result = Run(script, 1);
        // The kill line's shell finds nothing to kill; its complaints stay quiet.
        EXPECT_EQ("", testing::internal::GetCapturedStderr());
        EXPECT_EQ("", result.first);
        EXPECT_GE(result.second, 0.9);
        EXPECT_LT(result.second, 10.0);
        EXPECT_TRUE(invoker_test::ProcessDies(dir.Sub("child.pid")));
    }
}

TEST_F(QVRCProcessTest, ConcurrentSerialisedStartsEachRunInTheirOwnDirectory) {
    const int kModules = 8;
    std::vector<std::string> outputs(kModules);
    for (int i = 0; i < kModules; ++i) WriteScript(dir.Sub(std::to_string(i)), "where.sh", "pwd\n");
    for (int round = 0; round < 3; ++round) {
        std::vector<std::thread> threads;
        for (int i = 0; i < kModules; ++i) {
            threads.emplace_back([&, i] {
                QVRCProcess process(dir.Sub(std::to_string(i)), "where.sh", 10, true, true);
                process.Execute();
                outputs[i] = process.GetOutput();
            });
        }
        for (std::thread& thread : threads) thread.join();
        for (int i = 0; i < kModules; ++i) EXPECT_EQ(dir.Sub(std::to_string(i)) + "\n", outputs[i]);
    }
}

}  // namespace

// Runs the built module programs the way the collector does: through the
// shell, standard error discarded, standard output captured.
#include <gtest/gtest.h>
#include <sys/wait.h>

#include <chrono>
#include <cstdio>

#include "ModuleTestSupport.h"

using svmtest::FakeRoot;
using svmtest::Select;

namespace {

struct RunResult {
    std::string output;
    int status = -1;
    double seconds = 0;
};

RunResult RunModule(const std::string& command) {
    RunResult result;
    auto start = std::chrono::steady_clock::now();
    FILE* pipe = ::popen((command + " 2>/dev/null </dev/null").c_str(), "r");
    if (pipe == nullptr) return result;
    char buffer[4096];
    size_t n;
    while ((n = std::fread(buffer, 1, sizeof buffer, pipe)) > 0) result.output.append(buffer, n);
    int raw = ::pclose(pipe);
    result.status = WIFEXITED(raw) ? WEXITSTATUS(raw) : -1;
    result.seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
    return result;
}

class ModuleProgramTest : public ::testing::TestWithParam<const char*> {};

TEST_P(ModuleProgramTest, EmptyRootGivesFailureDocumentAndStatusOne) {
    FakeRoot root;
    RunResult r = RunModule(std::string(GetParam()) + " --root " + root.Path());
    EXPECT_EQ(1, r.status) << r.output;
    EXPECT_EQ(0u, Select(r.output, "//Device").size());
    auto status = Select(r.output, "/SVMInventory/SPStatus[@result='false']/Message");
    ASSERT_GE(status.size(), 1u) << r.output;
    for (auto& s : status) EXPECT_FALSE(s["#text"].empty());
}

TEST_P(ModuleProgramTest, UnknownOptionStillPrintsADocument) {
    RunResult r = RunModule(std::string(GetParam()) + " --bogus");
    EXPECT_EQ(2, r.status);
    auto status = Select(r.output, "/SVMInventory/SPStatus[@result='false']/Message");
    ASSERT_EQ(1u, status.size()) << r.output;
    EXPECT_NE(std::string::npos, status[0]["#text"].find("unknown option --bogus"));
}

TEST_P(ModuleProgramTest, RootOptionWithoutValueIsRejected) {
    RunResult r = RunModule(std::string(GetParam()) + " --root");
    EXPECT_EQ(2, r.status);
    EXPECT_EQ(1u, Select(r.output, "//SPStatus").size());
}

TEST_P(ModuleProgramTest, HelpGoesToStandardOutput) {
    RunResult r = RunModule(std::string(GetParam()) + " --help");
    EXPECT_EQ(0, r.status);
    EXPECT_NE(std::string::npos, r.output.find("--root DIR"));
}

TEST_P(ModuleProgramTest, LiveSystemAnswersWithinASecond) {
    RunResult r = RunModule(GetParam());
    EXPECT_LE(r.status, 1);
    EXPECT_LT(r.seconds, 1.0);
    EXPECT_EQ(1u, Select(r.output, "/SVMInventory").size()) << r.output;
}

INSTANTIATE_TEST_SUITE_P(Modules, ModuleProgramTest,
                         ::testing::Values(SVM_PCIINV, SVM_NICINV, SVM_STORAGEINV, SVM_BIOSINV, SVM_OSINV,
                                           SVM_BMCINV));

TEST(ModuleProgramsTest, RootWithEqualsSignIsAccepted) {
    FakeRoot root;
    root.Write("/etc/os-release", "ID=t\nNAME=T\nVERSION_ID=1.2\n");
    root.Write("/proc/sys/kernel/arch", "riscv64\n");
    RunResult r = RunModule(std::string(SVM_OSINV) + " --root=" + root.Path());
    EXPECT_EQ(0, r.status) << r.output;
    auto os = Select(r.output, "/SVMInventory/OperatingSystem");
    ASSERT_EQ(1u, os.size());
    EXPECT_EQ("riscv64", os[0]["osArch"]);
}

}  // namespace

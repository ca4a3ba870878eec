// Runs the built module programs the way the collector does: through the
// shell, standard error discarded, standard output captured.
#include <gtest/gtest.h>
#include <sys/wait.h>

#include <chrono>
#include <cstdio>

#include "ModuleTestSupport.h"

using svmtest::Failures;

namespace {

// Output and exit status of a command; fails the test if it takes a second or more.
std::pair<std::string, int> RunModule(const std::string& command) {
    const auto start = std::chrono::steady_clock::now();
    std::string output;
    FILE* pipe = ::popen((command + " 2>/dev/null </dev/null").c_str(), "r");
    if (pipe == nullptr) return {"", -1};
    char buffer[4096];
    for (size_t n; (n = std::fread(buffer, 1, sizeof buffer, pipe)) > 0;) output.append(buffer, n);
    const int raw = ::pclose(pipe);
    EXPECT_LT(std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count(), 1.0)
        << command;
    return {output, WIFEXITED(raw) ? WEXITSTATUS(raw) : -1};
}

class ModuleProgramTest : public ::testing::TestWithParam<const char*> {};

TEST_P(ModuleProgramTest, AlwaysPrintsADocumentAndExitsWithItsStatus) {
    svmtest::FakeRoot root;
    auto r = RunModule(std::string(GetParam()) + " --root " + root.Path());
    EXPECT_EQ(1, r.second) << r.first;
    EXPECT_EQ(0u, svmtest::Select(r.first, "//Device").size());
    ASSERT_GE(Failures(r.first).size(), 1u) << r.first;
    for (auto& message : Failures(r.first)) EXPECT_FALSE(message.empty());
    r = RunModule(std::string(GetParam()) + " --bogus");
    EXPECT_EQ(2, r.second);
    ASSERT_EQ(1u, Failures(r.first).size()) << r.first;
    EXPECT_NE(std::string::npos, Failures(r.first)[0].find("unknown option --bogus"));
    r = RunModule(std::string(GetParam()) + " --root");
    EXPECT_EQ(2, r.second);
    EXPECT_EQ(1u, Failures(r.first).size());
    r = RunModule(std::string(GetParam()) + " --help");
    EXPECT_EQ(0, r.second);
    EXPECT_NE(std::string::npos, r.first.find("--root DIR"));
    r = RunModule(GetParam());  // this machine
    EXPECT_LE(r.second, 1);
    EXPECT_EQ(1u, svmtest::Select(r.first, "/SVMInventory").size()) << r.first;
}

INSTANTIATE_TEST_SUITE_P(Modules, ModuleProgramTest,
                         ::testing::Values(SVM_PCIINV, SVM_NICINV, SVM_STORAGEINV, SVM_BIOSINV, SVM_OSINV,
                                           SVM_BMCINV));

TEST(ModuleProgramsTest, RootWithEqualsSignIsAccepted) {
    svmtest::FakeRoot root;
    root.Write("/etc/os-release", "ID=t\nNAME=T\nVERSION_ID=1.2\n");
    root.Write("/proc/sys/kernel/arch", "riscv64\n");
    auto r = RunModule(std::string(SVM_OSINV) + " --root=" + root.Path());
    EXPECT_EQ(0, r.second) << r.first;
    EXPECT_EQ("riscv64", svmtest::Select(r.first, "/SVMInventory/OperatingSystem")[0]["osArch"]);
}

}  // namespace

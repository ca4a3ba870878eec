// The built module programs run the way the collector runs them: through the
// shell, standard error discarded, standard output captured.
#include <sys/wait.h>

#include <chrono>
#include <cstdio>

#include "ModuleTestSupport.h"

namespace {

class ModuleProgramTest : public ::testing::TestWithParam<const char*> {};

TEST_P(ModuleProgramTest, PrintsADocumentAndExitsWithItsStatus) {
    svmtest::FakeRoot root;
    struct Row {
        std::string args;
        int status;
        const char* failure;  // text of the first failure message
    } const rows[] = {{" --root " + root.path, 1, ""},
                      {" --root=" + root.path, 1, ""},
                      {" --bogus", 2, "unknown option --bogus"},
                      {" --root", 2, ""},
                      {" --help", 0, nullptr}};
    for (const Row& row : rows) {
        SCOPED_TRACE(row.args);
        const auto start = std::chrono::steady_clock::now();
        FILE* pipe = ::popen((GetParam() + row.args + " 2>/dev/null </dev/null").c_str(), "r");
        ASSERT_NE(nullptr, pipe);
        std::string out;
        char buffer[4096];
        for (size_t n; (n = std::fread(buffer, 1, sizeof buffer, pipe)) > 0;) out.append(buffer, n);
        const int raw = ::pclose(pipe);
        EXPECT_LT(std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count(), 1.0);
        EXPECT_EQ(row.status, WIFEXITED(raw) ? WEXITSTATUS(raw) : -1) << out;
        if (row.failure == nullptr) {
            EXPECT_NE(std::string::npos, out.find("--root DIR")) << out;
            continue;
        }
        EXPECT_EQ(0u, svmtest::Select(out, "//Device").size());
        const auto failures = svmtest::Failures(out);
        ASSERT_FALSE(failures.empty()) << out;
        EXPECT_THAT(failures[0], ::testing::HasSubstr(row.failure));
        for (auto& message : failures) EXPECT_FALSE(message.empty());
    }
}

INSTANTIATE_TEST_SUITE_P(Modules, ModuleProgramTest,
                         ::testing::Values(SVM_PCIINV, SVM_NICINV, SVM_STORAGEINV, SVM_BIOSINV, SVM_OSINV,
                                           SVM_BMCINV));

}  // namespace

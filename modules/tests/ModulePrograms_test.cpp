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
        int status;           // -1: 1 when the document lists failures, else 0
        const char* failure;  // text of the first failure message; nullptr: the usage text
    } const rows[] = {{" --root " + root.path, -1, ""},
                      {" --root=" + root.path, -1, ""},
                      {"", -1, ""},  // this machine: only a valid document
                      {" --bogus", 2, "unknown option --bogus"},
                      {" --root", 2, "option --root requires a directory"},
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
        const int status = WIFEXITED(raw) ? WEXITSTATUS(raw) : -1;
        if (row.failure == nullptr) {
            EXPECT_EQ(0, status);
            EXPECT_NE(std::string::npos, out.find("--root DIR")) << out;
            continue;
        }
        const auto failures = svmtest::Failures(out);
        EXPECT_EQ(row.status != -1 ? row.status : failures.empty() ? 0 : 1, status) << out;
        if (row.args.empty()) continue;
        EXPECT_LT(std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count(), 1.0);
        EXPECT_EQ(0u, svmtest::Select(out, "//Device").size());
        if (row.status == 2) {
            EXPECT_THAT(failures, ::testing::ElementsAre(::testing::HasSubstr(row.failure)));
        }
    }
}

INSTANTIATE_TEST_SUITE_P(Modules, ModuleProgramTest,
                         ::testing::Values(SVM_PCIINV, SVM_NICINV, SVM_STORAGEINV, SVM_BIOSINV, SVM_OSINV,
                                           SVM_BMCINV, SVM_FWINV));

}  // namespace

#include "CQVRInvokeProcessWithOutput.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <memory>

#include "InvokerTestHelpers.h"

namespace {

using Writes = std::vector<std::pair<std::string, std::string>>;

class CQVRInvokeProcessWithOutputTest : public ::testing::Test {
protected:
    // A module in its own directory; an empty body means no command line.
    CQVRModuleDetail* Module(const std::string& name, const std::string& type, const std::string& body) {
        if (!body.empty()) invoker_test::WriteScript(dir.Sub(name), "run.sh", body);
        auto* detail = details.emplace_back(new CQVRModuleDetail()).get();
        detail->configuredDir = name;
        detail->workingDir = dir.Sub(name);
        detail->type = type;
        detail->commandLine = body.empty() ? "" : "run.sh";
        return detail;
    }
    ConfigDir dir;
    invoker_test::RecordingDataModelManager manager;
    std::vector<std::unique_ptr<CQVRModuleDetail>> details;
};

TEST_F(CQVRInvokeProcessWithOutputTest, UnknownTypeStopsTheOnlyWorkerAndLaterModulesNeverRun) {
    std::vector<CQVRModuleDetail*> modules{Module("first", "cli", "echo 1\n"),
                                           Module("odd", "exe", "echo 2\n"),
                                           Module("never", "cli", "touch ran.marker\n")};
    CQVRInvokeProcessWithOutput invoker(&manager, modules, 1, false, 10);
    EXPECT_TRUE(invoker.Process());
    EXPECT_TRUE(invoker.EndProcess());
    EXPECT_EQ((Writes{{"first", "1\n"}}), manager.Writes());
    EXPECT_NE(0, access(dir.Sub("never/ran.marker").c_str(), F_OK));
}

}  // namespace

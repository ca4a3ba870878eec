#include "CQVRInvokeProcessWithOutput.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <algorithm>
#include <memory>
#include <new>
#include <string>
#include <vector>

#include "CQVRBadAllocException.h"
#include "CQVRICException.h"
#include "CQVRInvokeOnlyProcess.h"
#include "CQVRInvokerTaskExe.h"
#include "CQVRInvokerTaskLibrary.h"
#include "InvokerTestHelpers.h"
#include "RecordingDataModelManager.h"

namespace {

using invoker_test::RecordingDataModelManager;
using invoker_test::TempDir;
using invoker_test::WriteScript;

// Modules made in a temporary directory; the details are owned here.
class ModuleFixture : public ::testing::Test {
protected:
    CQVRModuleDetail* Module(const std::string& name, const std::string& type, const std::string& body) {
        const std::string moduleDir = dir.Sub(name);
        invoker_test::MakeDir(moduleDir);
        if (!body.empty()) WriteScript(moduleDir, "run.sh", body);
        std::unique_ptr<CQVRModuleDetail> detail(new CQVRModuleDetail());
        detail->configuredDir = name;
        detail->workingDir = moduleDir;
        detail->type = type;
        detail->commandLine = body.empty() ? "" : "run.sh";
        details.push_back(std::move(detail));
        return details.back().get();
    }
    std::string Echo(const std::string& text) { return "echo '" + text + "'\n"; }

    invoker_test::CwdRestorer restoreCwd;
    TempDir dir;
    RecordingDataModelManager manager;
    std::vector<std::unique_ptr<CQVRModuleDetail>> details;
};

using CQVRInvokeProcessWithOutputTest = ModuleFixture;

TEST_F(CQVRInvokeProcessWithOutputTest, NoThreadsMeansNoPoolAndNothingRuns) {
    std::vector<CQVRModuleDetail*> modules{Module("a", "cli", Echo("<SVMInventory/>"))};
    CQVRInvokeProcessWithOutput invoker(&manager, modules, 0, false, 5);
    EXPECT_FALSE(invoker.IsPoolReady());
    EXPECT_FALSE(invoker.Process());
    EXPECT_TRUE(invoker.EndProcess());
    EXPECT_TRUE(manager.Writes().empty());
}

TEST_F(CQVRInvokeProcessWithOutputTest, EveryCliModuleReachesTheManagerWithItsOutput) {
    std::vector<CQVRModuleDetail*> modules;
    for (int i = 0; i < 6; ++i) {
        const std::string name = "m" + std::to_string(i);
        modules.push_back(Module(name, "cli", Echo("<SVMInventory>" + name + "</SVMInventory>")));
    }
    CQVRInvokeProcessWithOutput invoker(&manager, modules, 3, false, 10);
    ASSERT_TRUE(invoker.IsPoolReady());
    EXPECT_TRUE(invoker.Process());
    EXPECT_TRUE(invoker.EndProcess());
    auto writes = manager.Writes();
    std::sort(writes.begin(), writes.end());
    ASSERT_EQ(6u, writes.size());
    for (int i = 0; i < 6; ++i) {
        const std::string name = "m" + std::to_string(i);
        EXPECT_EQ(name, writes[i].first);
        EXPECT_EQ("<SVMInventory>" + name + "</SVMInventory>\n", writes[i].second);
    }
    EXPECT_TRUE(invoker.EndProcess());
}

TEST_F(CQVRInvokeProcessWithOutputTest, LibraryModulesQueueATaskThatReportsNothing) {
    std::vector<CQVRModuleDetail*> modules{Module("lib", "lib", Echo("ignored")),
                                           Module("cli", "cli", Echo("x"))};
    CQVRInvokeProcessWithOutput invoker(&manager, modules, 1, false, 10);
    EXPECT_TRUE(invoker.Process());
    EXPECT_TRUE(invoker.EndProcess());
    EXPECT_EQ(std::vector<std::string>{"cli"}, manager.Identities());
}

TEST_F(CQVRInvokeProcessWithOutputTest, UnknownTypeStopsTheOnlyWorkerAndLaterModulesNeverRun) {
    std::vector<CQVRModuleDetail*> modules{Module("first", "cli", Echo("1")), Module("odd", "exe", Echo("2")),
                                           Module("never", "cli", "touch ran.marker\n")};
    CQVRInvokeProcessWithOutput invoker(&manager, modules, 1, false, 10);
    EXPECT_TRUE(invoker.Process());
    EXPECT_TRUE(invoker.EndProcess());
    EXPECT_EQ(std::vector<std::string>{"first"}, manager.Identities());
    EXPECT_NE(0, access(dir.Sub("never/ran.marker").c_str(), F_OK));
}

TEST_F(CQVRInvokeProcessWithOutputTest, ModuleThatCannotStartStillReportsEmptyOutput) {
    std::vector<CQVRModuleDetail*> modules{Module("nocommand", "cli", "")};
    CQVRInvokeProcessWithOutput invoker(&manager, modules, 1, false, 10);
    EXPECT_TRUE(invoker.Process());
    EXPECT_TRUE(invoker.EndProcess());
    ASSERT_EQ(1u, manager.Writes().size());
    EXPECT_EQ("nocommand", manager.Writes()[0].first);
    EXPECT_EQ("", manager.Writes()[0].second);
}

TEST_F(CQVRInvokeProcessWithOutputTest, ModuleOverItsTimeLimitReportsEmptyOutput) {
    std::vector<CQVRModuleDetail*> modules{Module("slow", "cli", "echo partial\nsleep 30\n"),
                                           Module("quick", "cli", Echo("fine"))};
    CQVRInvokeProcessWithOutput invoker(&manager, modules, 2, false, 1);
    EXPECT_TRUE(invoker.Process());
    EXPECT_TRUE(invoker.EndProcess());
    auto writes = manager.Writes();
    std::sort(writes.begin(), writes.end());
    ASSERT_EQ(2u, writes.size());
    EXPECT_EQ("quick", writes[0].first);
    EXPECT_EQ("fine\n", writes[0].second);
    EXPECT_EQ("slow", writes[1].first);
    EXPECT_EQ("", writes[1].second);
    EXPECT_TRUE(invoker_test::HasNoChildren());
}

TEST_F(CQVRInvokeProcessWithOutputTest, DestroyingWithoutEndProcessWaitsForQueuedModules) {
    std::vector<CQVRModuleDetail*> modules{Module("a", "cli", Echo("1")), Module("b", "cli", Echo("2"))};
    {
        CQVRInvokeProcessWithOutput invoker(&manager, modules, 1, true, 10);
        EXPECT_TRUE(invoker.Process());
    }
    EXPECT_EQ((std::vector<std::string>{"a", "b"}), manager.Identities());
}

using CQVRInvokeOnlyProcessTest = ModuleFixture;

TEST_F(CQVRInvokeOnlyProcessTest, RunsModulesOneAfterAnotherWithoutReportingOutput) {
    const std::string log = dir.Sub("order.log");
    std::vector<CQVRModuleDetail*> modules{
        Module("one", "cli",
               "echo start-one >> " + log + "\nsleep 0.2\necho end-one >> " + log + "\necho out\n"),
        Module("two", "cli", "echo start-two >> " + log + "\necho end-two >> " + log + "\n")};
    CQVRInvokeOnlyProcess invoker(&manager, modules, 10);
    EXPECT_TRUE(invoker.Process());
    EXPECT_TRUE(invoker.EndProcess());
    EXPECT_EQ("start-one\nend-one\nstart-two\nend-two\n", invoker_test::ReadFile(log));
    EXPECT_TRUE(manager.Writes().empty());
}

TEST_F(CQVRInvokeOnlyProcessTest, EmptyListSucceeds) {
    std::vector<CQVRModuleDetail*> modules;
    CQVRInvokeOnlyProcess invoker(&manager, modules);
    EXPECT_TRUE(invoker.Process());
    EXPECT_TRUE(invoker.EndProcess());
}

using CQVRInvokerTaskTest = ModuleFixture;

TEST_F(CQVRInvokerTaskTest, ExecutableTaskAddsItsFrameToAnICException) {
    CQVRModuleDetail* module = Module("m", "cli", Echo("x"));
    manager.onWrite = [](const std::string&) {
        throw CQVRICException("qvr_inner.cpp", 5, "WriteData", "store failed", "CQVRICException");
    };
    CQVRInvokerTaskExe task(&manager, module, 10);
    try {
        task.Process();
        FAIL() << "no exception";
    } catch (const CQVRICException& e) {
        const std::string text = e.what();
        EXPECT_EQ(
            0u,
            text.find("CQVRICException - [store failed]\n\t at WriteData(qvr_inner.cpp:5)]\n\t at Process("
                      "qvr_ModularIC/Invoker/src/CQVRInvokerTaskExecutable:"))
            << text;
    }
}

TEST_F(CQVRInvokerTaskTest, ExecutableTaskTurnsBadAllocIntoItsOwnException) {
    CQVRModuleDetail* module = Module("m", "cli", Echo("x"));
    manager.onWrite = [](const std::string&) { throw std::bad_alloc(); };
    CQVRInvokerTaskExe task(&manager, module, 10);
    try {
        task.Process();
        FAIL() << "no exception";
    } catch (const CQVRBadAllocException& e) {
        const std::string text = e.what();
        const std::string prefix = std::string(std::bad_alloc().what()) +
                                   " qvr_ModularIC/Invoker/src/CQVRInvokerTaskExecutable Process ";
        EXPECT_EQ(0u, text.find(prefix)) << text;
        EXPECT_EQ('\n', text.back());
    }
}

TEST_F(CQVRInvokerTaskTest, LibraryTaskDoesNothing) {
    CQVRModuleDetail* module = Module("m", "lib", "touch ran.marker\n");
    CQVRInvokerTaskLibrary task(&manager, module);
    task.Process();
    EXPECT_TRUE(manager.Writes().empty());
    EXPECT_NE(0, access(dir.Sub("m/ran.marker").c_str(), F_OK));
}

}  // namespace

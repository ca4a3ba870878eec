#include "CQVRICInvoker.h"

#include <gtest/gtest.h>

#include "CQVRInvokeProcessWithOutput.h"
#include "InvokerTestHelpers.h"

namespace {

struct Sizes {
    unsigned long p, m, s, priority, parallel, serial;
};

const Sizes kBudget[] = {
    {3, 10, 1, 3, 4, 1}, {9, 5, 0, 6, 2, 0}, {2, 3, 0, 2, 3, 0},  {20, 5, 0, 6, 2, 0},
    {0, 0, 0, 0, 0, 0},  {0, 0, 4, 0, 0, 1}, {0, 20, 3, 0, 7, 1}, {8, 1, 0, 7, 1, 0},
    {7, 5, 1, 5, 2, 1},  {5, 5, 0, 5, 3, 0}, {10, 0, 2, 7, 0, 1}, {7, 1, 2, 6, 1, 1},
};

class CQVRICInvokerTest : public ::testing::Test {
protected:
    CQVRModuleDetail* Detail(const std::string& name) {
        auto* detail = new CQVRModuleDetail();  // the module list owns it
        detail->configuredDir = name, detail->type = "cli";
        return detail;
    }
    void Fill(CQVRModuleList& list, unsigned long p, unsigned long m, unsigned long s) {
        list.AddPreInventoryList(Detail("pre"));
        list.AddPostInventoryList(Detail("post"));
        for (unsigned long i = 0; i < p; ++i) list.AddPriorityList(Detail("p"));
        for (unsigned long i = 0; i < m; ++i) list.AddModuleList(Detail("m"));
        for (unsigned long i = 0; i < s; ++i) list.AddSerialRunModuleList(Detail("s"));
    }
    static unsigned long Threads(const CQVRICInvoker& invoker, QVR_IC_INVOKER_TASKS task) {
        auto* pooled = dynamic_cast<CQVRInvokeProcessWithOutput*>(invoker.GetModuleInvoker(task));
        return pooled == nullptr ? 999 : pooled->GetThreadCount();
    }

    invoker_test::RecordingDataModelManager manager;
    CQVRModuleList list;
};

TEST_F(CQVRICInvokerTest, ThreadBudgetSizesEachPoolAndTheTotalLeavesOutPrePost) {
    for (const Sizes& row : kBudget) {
        SCOPED_TRACE(::testing::Message() << "P=" << row.p << " M=" << row.m << " S=" << row.s);
        CQVRModuleList rowList;
        Fill(rowList, row.p, row.m, row.s);
        invoker_test::RecordingDataModelManager rowManager;
        CQVRICInvoker invoker(nullptr, &rowManager, &rowList);
        EXPECT_EQ(static_cast<int64_t>(row.p + row.m + row.s), rowManager.GetTotalInvComponents());
        EXPECT_EQ(row.priority, Threads(invoker, QVR_IC_INVOKER_PRIORITY));
        EXPECT_EQ(row.parallel, Threads(invoker, QVR_IC_INVOKER_PARALLEL));
        EXPECT_EQ(row.serial, Threads(invoker, QVR_IC_INVOKER_SERIAL));
    }
}

// Real script modules append start and end markers to one log, so the order
// of phases can be read back.
class CQVRICInvokerPhaseTest : public CQVRICInvokerTest {
protected:
    CQVRModuleDetail* Script(const std::string& name, double sleepSeconds) {
        invoker_test::WriteScript(dir.Sub(name), "mod.sh",
                                  "echo start-" + name + " >> ../log\nsleep " + std::to_string(sleepSeconds) +
                                      "\necho end-" + name + " >> ../log\necho " + name + "\n");
        CQVRModuleDetail* detail = Detail(name);
        detail->workingDir = dir.Sub(name);
        detail->commandLine = "mod.sh";
        return detail;
    }
    // Offset of a marker line in the log, or -1.
    long At(const std::string& marker) {
        const auto at = ("\n" + invoker_test::ReadFile(dir.Sub("log"))).find("\n" + marker + "\n");
        return at == std::string::npos ? -1 : static_cast<long>(at);
    }
    ConfigDir dir;
};

TEST_F(CQVRICInvokerPhaseTest, PhasesRunInOrderAndPooledPhasesOverlap) {
    list.AddPreInventoryList(Script("pre1", 0.2));
    CQVRModuleDetail* pre2 = Script("pre2", 0);
    pre2->type = "lib";  // install steps run whatever their type
    list.AddPreInventoryList(pre2);
    list.AddPriorityList(Script("prio", 0.5));
    list.AddModuleList(Script("par", 0.5));
    list.AddModuleList(Detail("nocommand"));  // reported with an empty output
    CQVRModuleDetail* library = Detail("lib");
    library->type = "lib";  // reports nothing here
    list.AddModuleList(library);
    list.AddSerialRunModuleList(Script("ser1", 0.3));
    list.AddSerialRunModuleList(Script("ser2", 0.1));
    list.AddPostInventoryList(Script("post", 0));
    CQVRICInvoker invoker(nullptr, &manager, &list, 20);
    EXPECT_EQ(6, manager.GetTotalInvComponents());
    EXPECT_EQ(0u, invoker.ProcessInventory());
    EXPECT_LT(At("end-pre1"), At("start-pre2"));
    EXPECT_LT(At("end-ser1"), At("start-ser2"));  // one serial thread: list order
    EXPECT_LT(At("end-ser2"), At("start-post"));
    for (const std::string name : {"prio", "par", "ser1"}) {
        EXPECT_LT(At("end-pre2"), At("start-" + name)) << name;
        EXPECT_LT(At("end-" + name), At("start-post")) << name;
        for (const std::string other : {"prio", "par", "ser1"})
            EXPECT_LT(At("start-" + name), At("end-" + other)) << name << " overlaps " << other;
    }
    EXPECT_EQ(
        (std::vector<std::pair<std::string, std::string>>{
            {"nocommand", ""}, {"par", "par\n"}, {"prio", "prio\n"}, {"ser1", "ser1\n"}, {"ser2", "ser2\n"}}),
        manager.Writes());
    EXPECT_TRUE(invoker_test::HasNoChildren());
}

// An unknown type hands the pool an empty task, which ends the worker that takes it.
TEST_F(CQVRICInvokerPhaseTest, AnUnknownTypeStopsTheOnlyWorkerAndLaterModulesNeverRun) {
    CQVRModuleDetail* odd = Script("odd", 0);
    odd->type = "exe";
    list.AddModuleList(Script("first", 0));
    list.AddModuleList(odd);
    list.AddModuleList(Script("never", 0));
    CQVRInvokeProcessWithOutput invoker(&manager, list.GetModuleList(), 1, false, 10);
    EXPECT_TRUE(invoker.Process());
    EXPECT_TRUE(invoker.EndProcess());
    EXPECT_EQ((std::vector<std::pair<std::string, std::string>>{{"first", "first\n"}}), manager.Writes());
    EXPECT_EQ(-1, At("start-never"));
}

}  // namespace

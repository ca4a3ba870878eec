#include "CQVRICInvoker.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <new>
#include <sstream>

#include "CQVRBadAllocException.h"
#include "CQVRICException.h"
#include "CQVRInvokeProcessWithOutput.h"
#include "InvokerTestHelpers.h"

namespace {

using invoker_test::WhatOf;

struct Sizes {
    unsigned long p, m, s, priority, parallel, serial, findResult;
};

// findResult: the parallel count when the priority list fills the budget, else P + M.
const Sizes kBudget[] = {
    {3, 10, 1, 3, 4, 1, 13}, {9, 5, 0, 6, 2, 0, 2},  {2, 3, 0, 2, 3, 0, 5},   {20, 5, 0, 6, 2, 0, 2},
    {0, 0, 0, 0, 0, 0, 0},   {0, 0, 4, 0, 0, 1, 0},  {0, 20, 3, 0, 7, 1, 20}, {8, 1, 0, 7, 1, 0, 1},
    {7, 5, 1, 5, 2, 1, 2},   {5, 5, 0, 5, 3, 0, 10}, {10, 0, 2, 7, 0, 1, 0},  {7, 1, 2, 6, 1, 1, 1},
};

class CQVRICInvokerTest : public ::testing::Test {
protected:
    CQVRModuleDetail* Detail(const std::string& name) {
        auto* detail = new CQVRModuleDetail();  // the module list owns it
        detail->configuredDir = name;
        detail->type = "cli";
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
        unsigned long priority = 99, parallel = 99, serial = 99;
        CQVRICInvoker::ComputeThreadBudget(row.p, row.m, row.s, priority, parallel, serial);
        EXPECT_EQ(row.priority, priority);
        EXPECT_EQ(row.parallel, parallel);
        EXPECT_EQ(row.serial, serial);

        CQVRModuleList rowList;
        Fill(rowList, row.p, row.m, row.s);
        invoker_test::RecordingDataModelManager rowManager;
        CQVRICInvoker invoker(nullptr, &rowManager, &rowList);
        EXPECT_EQ(static_cast<int64_t>(row.p + row.m + row.s), rowManager.GetTotalInvComponents());
        EXPECT_EQ(row.findResult, invoker.FindNumThreadsPerInvoker(priority, parallel, serial));
        EXPECT_EQ(row.priority, Threads(invoker, QVR_IC_INVOKER_PRIORITY));
        EXPECT_EQ(row.parallel, Threads(invoker, QVR_IC_INVOKER_PARALLEL));
        EXPECT_EQ(row.serial, Threads(invoker, QVR_IC_INVOKER_SERIAL));
    }
}

TEST_F(CQVRICInvokerTest, EmptyListsGivePoollessPhasesAndARunThatReturnsAtOnce) {
    CQVRICInvoker invoker(nullptr, &manager, &list);
    for (QVR_IC_INVOKER_TASKS task :
         {QVR_IC_INVOKER_PRIORITY, QVR_IC_INVOKER_PARALLEL, QVR_IC_INVOKER_SERIAL}) {
        EXPECT_FALSE(invoker.GetModuleInvoker(task)->Process());
        EXPECT_TRUE(invoker.GetModuleInvoker(task)->EndProcess());
    }
    EXPECT_EQ(0u, invoker.ProcessInventory());
}

// Fails every phase invoker allocation, or hands out a given one.
class ScriptedInvoker : public CQVRICInvoker {
public:
    using CQVRICInvoker::CQVRICInvoker;
    IQVRModuleInvoker* next = nullptr;
    bool fail = false;

protected:
    IQVRModuleInvoker* NewOnlyProcessInvoker(const std::vector<CQVRModuleDetail*>& modules) override {
        if (fail) return nullptr;
        if (next != nullptr) return std::exchange(next, nullptr);
        return CQVRICInvoker::NewOnlyProcessInvoker(modules);
    }
    IQVRModuleInvoker* NewOutputInvoker(const std::vector<CQVRModuleDetail*>& modules, unsigned long threads,
                                        bool raised) override {
        return fail ? nullptr : CQVRICInvoker::NewOutputInvoker(modules, threads, raised);
    }
};

TEST_F(CQVRICInvokerTest, FailedAllocationsThrowTheirMessages) {
    ScriptedInvoker invoker(nullptr, &manager, &list);
    invoker.fail = true;
    const std::vector<CQVRModuleDetail*> none;
    const std::string pooled = "Unable to create memory for \t\t\t\tModule Invoker Object.";
    const std::string prePost = "Unable to create memory for \t\t\tPre/Post Module Invoker Object.";
    const std::pair<QVR_IC_INVOKER_TASKS, std::string> rows[] = {{QVR_IC_INVOKER_PRE_INSTALL, prePost},
                                                                 {QVR_IC_INVOKER_PRIORITY, pooled},
                                                                 {QVR_IC_INVOKER_PARALLEL, pooled},
                                                                 {QVR_IC_INVOKER_SERIAL, pooled},
                                                                 {QVR_IC_INVOKER_POST_INSTALL, prePost}};
    for (const auto& row : rows) {
        EXPECT_EQ(row.second,
                  WhatOf<CQVRBadAllocException>([&] { invoker.InitTask(row.first, none, 1, false); }));
        EXPECT_NE(nullptr, invoker.GetModuleInvoker(row.first));  // the slot keeps its invoker
    }
    EXPECT_NO_THROW(invoker.InitTask(static_cast<QVR_IC_INVOKER_TASKS>(5), none, 1, false));
}

TEST_F(CQVRICInvokerTest, ProcessInventoryAddsItsFrameOrConvertsBadAlloc) {
    struct Throwing : IQVRModuleInvoker {
        explicit Throwing(bool badAlloc) : badAlloc(badAlloc) {}
        bool Process() override {
            if (badAlloc) throw std::bad_alloc();
            throw CQVRICException("qvr_phase.cpp", 9, "Process", "phase failed", "CQVRICException");
        }
        bool EndProcess() override { return true; }
        bool badAlloc;
    };
    ScriptedInvoker invoker(nullptr, &manager, &list);
    invoker.next = new Throwing(false);
    invoker.InitTask(QVR_IC_INVOKER_PRE_INSTALL, {}, 0, false);
    EXPECT_EQ(0u, WhatOf<CQVRICException>([&] { invoker.ProcessInventory(); })
                      .find("CQVRICException - [phase failed]\n\t at Process(qvr_phase.cpp:9)]\n\t at "
                            "ProcessInventory(qvr_ModularIC/Invoker/src/CQVRICInvoker:"));
    invoker.next = new Throwing(true);
    invoker.InitTask(QVR_IC_INVOKER_PRE_INSTALL, {}, 0, false);
    const std::string text = WhatOf<CQVRBadAllocException>([&] { invoker.ProcessInventory(); });
    EXPECT_EQ(0u, text.find(std::string(std::bad_alloc().what()) +
                            " qvr_ModularIC/Invoker/src/CQVRICInvoker ProcessInventory "))
        << text;
    EXPECT_EQ('\n', text.back());
}

// Real script modules append start and end markers to one log, so the order
// of phases can be read back.
class CQVRICInvokerPhaseTest : public CQVRICInvokerTest {
protected:
    CQVRModuleDetail* Script(const std::string& name, const std::string& type, double sleepSeconds) {
        std::ostringstream body;
        body << "echo start-" << name << " >> ../log\nsleep " << sleepSeconds << "\necho end-" << name
             << " >> ../log\necho '<SVMInventory>" << name << "</SVMInventory>'\n";
        invoker_test::WriteScript(dir.Sub(name), "mod.sh", body.str());
        CQVRModuleDetail* detail = Detail(name);
        detail->workingDir = dir.Sub(name);
        detail->type = type;
        detail->commandLine = "mod.sh";
        return detail;
    }
    // Position of a marker line in the log, or -1.
    long At(const std::string& marker) {
        std::vector<std::string> lines;
        std::istringstream text(invoker_test::ReadFile(dir.Sub("log")));
        for (std::string line; std::getline(text, line);) lines.push_back(line);
        const auto it = std::find(lines.begin(), lines.end(), marker);
        return it == lines.end() ? -1 : static_cast<long>(it - lines.begin());
    }
    std::string Inventory(const std::string& name) { return "<SVMInventory>" + name + "</SVMInventory>\n"; }

    invoker_test::TempDir dir;
};

TEST_F(CQVRICInvokerPhaseTest, PhasesRunInOrderAndPooledPhasesOverlap) {
    list.AddPreInventoryList(Script("pre1", "cli", 0.2));
    list.AddPreInventoryList(Script("pre2", "cli", 0));
    list.AddPriorityList(Script("prio", "cli", 0.5));
    list.AddModuleList(Script("par", "cli", 0.5));
    list.AddSerialRunModuleList(Script("ser1", "cli", 0.3));
    list.AddSerialRunModuleList(Script("ser2", "cli", 0.1));
    list.AddPostInventoryList(Script("post", "cli", 0));
    CQVRICInvoker invoker(nullptr, &manager, &list, 20);
    EXPECT_EQ(4, manager.GetTotalInvComponents());
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
    EXPECT_EQ((std::vector<std::pair<std::string, std::string>>{{"par", Inventory("par")},
                                                                {"prio", Inventory("prio")},
                                                                {"ser1", Inventory("ser1")},
                                                                {"ser2", Inventory("ser2")}}),
              manager.Writes());
    EXPECT_TRUE(invoker_test::HasNoChildren());
}

TEST_F(CQVRICInvokerPhaseTest, ModuleOverTheLimitReportsEmptyOutputAndPostInstallStillRuns) {
    list.AddModuleList(Script("slow", "cli", 30));
    list.AddModuleList(Script("fast", "cli", 0));
    list.AddModuleList(Script("library", "lib", 0));
    list.AddPostInventoryList(Script("post", "cli", 0));
    CQVRICInvoker invoker(nullptr, &manager, &list, 1);
    EXPECT_EQ(0u, invoker.ProcessInventory());
    EXPECT_EQ((std::vector<std::pair<std::string, std::string>>{{"fast", Inventory("fast")}, {"slow", ""}}),
              manager.Writes());
    EXPECT_NE(-1, At("end-post"));
    EXPECT_EQ(-1, At("end-slow"));
    EXPECT_EQ(-1, At("start-library"));
    EXPECT_TRUE(invoker_test::HasNoChildren());
}

}  // namespace

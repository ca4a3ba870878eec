#include "CQVRICInvoker.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <new>
#include <sstream>
#include <string>
#include <vector>

#include "CQVRBadAllocException.h"
#include "CQVRICException.h"
#include "CQVRInvokeOnlyProcess.h"
#include "CQVRInvokeProcessWithOutput.h"
#include "InvokerTestHelpers.h"
#include "RecordingDataModelManager.h"

namespace {

using invoker_test::RecordingDataModelManager;

struct BudgetRow {
    unsigned long p, m, s;
    unsigned long priority, parallel, serial;
};

TEST(CQVRICInvokerBudget, ThreadCountsFollowTheBudgetRule) {
    const BudgetRow rows[] = {
        {3, 10, 1, 3, 4, 1}, {9, 5, 0, 6, 2, 0},  {2, 3, 0, 2, 3, 0},  {20, 5, 0, 6, 2, 0},
        {0, 0, 0, 0, 0, 0},  {0, 0, 4, 0, 0, 1},  {0, 20, 0, 0, 8, 0}, {0, 20, 3, 0, 7, 1},
        {8, 0, 0, 8, 0, 0},  {8, 1, 0, 7, 1, 0},  {7, 5, 1, 5, 2, 1},  {5, 5, 0, 5, 3, 0},
        {4, 4, 0, 4, 4, 0},  {10, 0, 2, 7, 0, 1}, {6, 1, 1, 6, 1, 1},  {7, 0, 1, 7, 0, 1},
    };
    for (const BudgetRow& row : rows) {
        std::ostringstream name;
        name << "P=" << row.p << " M=" << row.m << " S=" << row.s;
        SCOPED_TRACE(name.str());
        unsigned long priority = 99, parallel = 99, serial = 99;
        CQVRICInvoker::ComputeThreadBudget(row.p, row.m, row.s, priority, parallel, serial);
        EXPECT_EQ(row.priority, priority);
        EXPECT_EQ(row.parallel, parallel);
        EXPECT_EQ(row.serial, serial);
        EXPECT_LE(priority + parallel + serial, CQVRICInvoker::kThreadBudget);
    }
}

// Module lists whose records point nowhere: enough for counting and pools.
class CQVRICInvokerTest : public ::testing::Test {
protected:
    CQVRModuleDetail* Detail(const std::string& name, const std::string& type = "cli") {
        CQVRModuleDetail* detail = new CQVRModuleDetail();
        detail->configuredDir = name;
        detail->type = type;
        return detail;
    }
    void Fill(unsigned long pre, unsigned long p, unsigned long m, unsigned long s, unsigned long post) {
        Fill(list, pre, p, m, s, post);
    }
    void Fill(CQVRModuleList& target, unsigned long pre, unsigned long p, unsigned long m, unsigned long s,
              unsigned long post) {
        for (unsigned long i = 0; i < pre; ++i) target.AddPreInventoryList(Detail("pre"));
        for (unsigned long i = 0; i < p; ++i) target.AddPriorityList(Detail("p"));
        for (unsigned long i = 0; i < m; ++i) target.AddModuleList(Detail("m"));
        for (unsigned long i = 0; i < s; ++i) target.AddSerialRunModuleList(Detail("s"));
        for (unsigned long i = 0; i < post; ++i) target.AddPostInventoryList(Detail("post"));
    }
    static unsigned long Threads(const CQVRICInvoker& invoker, QVR_IC_INVOKER_TASKS task) {
        auto* pooled = dynamic_cast<CQVRInvokeProcessWithOutput*>(invoker.GetModuleInvoker(task));
        return pooled == nullptr ? 999 : pooled->GetThreadCount();
    }

    RecordingDataModelManager manager;
    CQVRModuleList list;
};

TEST_F(CQVRICInvokerTest, ConstructionSizesEachPoolAndPublishesTheTotalWithoutPrePost) {
    Fill(2, 3, 10, 1, 4);
    CQVRICInvoker invoker(nullptr, &manager, &list);
    EXPECT_EQ(14u, invoker.GetTotalInvComponents());
    EXPECT_EQ(14, manager.GetTotalInvComponents());
    EXPECT_EQ(3u, Threads(invoker, QVR_IC_INVOKER_PRIORITY));
    EXPECT_EQ(4u, Threads(invoker, QVR_IC_INVOKER_PARALLEL));
    EXPECT_EQ(1u, Threads(invoker, QVR_IC_INVOKER_SERIAL));
    EXPECT_NE(nullptr,
              dynamic_cast<CQVRInvokeOnlyProcess*>(invoker.GetModuleInvoker(QVR_IC_INVOKER_PRE_INSTALL)));
    EXPECT_NE(nullptr,
              dynamic_cast<CQVRInvokeOnlyProcess*>(invoker.GetModuleInvoker(QVR_IC_INVOKER_POST_INSTALL)));
    for (QVR_IC_INVOKER_TASKS task :
         {QVR_IC_INVOKER_PRIORITY, QVR_IC_INVOKER_PARALLEL, QVR_IC_INVOKER_SERIAL}) {
        auto* pooled = dynamic_cast<CQVRInvokeProcessWithOutput*>(invoker.GetModuleInvoker(task));
        ASSERT_NE(nullptr, pooled);
        EXPECT_TRUE(pooled->IsPoolReady());
    }
}

TEST_F(CQVRICInvokerTest, FindNumThreadsPerInvokerAnswersAsDocumented) {
    struct Row {
        unsigned long p, m, s, expectedResult;
    };
    // The parallel thread count when the priority list fills the budget, else P + M.
    for (const Row& row :
         {Row{3, 10, 1, 13}, Row{9, 5, 0, 2}, Row{20, 5, 0, 2}, Row{7, 1, 2, 1}, Row{2, 3, 0, 5}}) {
        SCOPED_TRACE(row.p * 100 + row.m * 10 + row.s);
        CQVRModuleList rowList;
        Fill(rowList, 0, row.p, row.m, row.s, 0);
        CQVRICInvoker invoker(nullptr, &manager, &rowList);
        unsigned long priority = 0, parallel = 0, serial = 0;
        EXPECT_EQ(row.expectedResult, invoker.FindNumThreadsPerInvoker(priority, parallel, serial));
        EXPECT_EQ(row.p + row.m + row.s, invoker.GetTotalInvComponents());
        EXPECT_EQ(priority, Threads(invoker, QVR_IC_INVOKER_PRIORITY));
        EXPECT_EQ(parallel, Threads(invoker, QVR_IC_INVOKER_PARALLEL));
        EXPECT_EQ(serial, Threads(invoker, QVR_IC_INVOKER_SERIAL));
    }
}

TEST_F(CQVRICInvokerTest, EmptyListsGiveNoPoolsAndARunThatReturnsAtOnce) {
    Fill(0, 0, 0, 0, 0);
    CQVRICInvoker invoker(nullptr, &manager, &list);
    EXPECT_EQ(0u, invoker.GetTotalInvComponents());
    EXPECT_EQ(0, manager.GetTotalInvComponents());
    for (QVR_IC_INVOKER_TASKS task :
         {QVR_IC_INVOKER_PRIORITY, QVR_IC_INVOKER_PARALLEL, QVR_IC_INVOKER_SERIAL}) {
        IQVRModuleInvoker* pooled = invoker.GetModuleInvoker(task);
        ASSERT_NE(nullptr, pooled);
        EXPECT_EQ(0u, Threads(invoker, task));
        EXPECT_FALSE(pooled->Process());
        EXPECT_TRUE(pooled->EndProcess());
    }
    EXPECT_EQ(0u, invoker.ProcessInventory());
    EXPECT_TRUE(manager.Writes().empty());
}

// Fails every allocation of a phase invoker, or hands out a given one.
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
        if (fail) return nullptr;
        return CQVRICInvoker::NewOutputInvoker(modules, threads, raised);
    }
};

TEST_F(CQVRICInvokerTest, InitTaskReportsFailedAllocationWithItsMessages) {
    ScriptedInvoker invoker(nullptr, &manager, &list);
    invoker.fail = true;
    const std::vector<CQVRModuleDetail*> none;
    struct Row {
        QVR_IC_INVOKER_TASKS task;
        const char* message;
    };
    for (const Row& row :
         {Row{QVR_IC_INVOKER_PRIORITY, "Unable to create memory for \t\t\t\tModule Invoker Object."},
          Row{QVR_IC_INVOKER_PARALLEL, "Unable to create memory for \t\t\t\tModule Invoker Object."},
          Row{QVR_IC_INVOKER_SERIAL, "Unable to create memory for \t\t\t\tModule Invoker Object."},
          Row{QVR_IC_INVOKER_PRE_INSTALL,
              "Unable to create memory for \t\t\tPre/Post Module Invoker Object."},
          Row{QVR_IC_INVOKER_POST_INSTALL,
              "Unable to create memory for \t\t\tPre/Post Module Invoker Object."}}) {
        SCOPED_TRACE(row.task);
        try {
            invoker.InitTask(row.task, none, 1, false);
            ADD_FAILURE() << "no exception";
        } catch (const CQVRBadAllocException& e) {
            EXPECT_STREQ(row.message, e.what());
        }
        // The slot keeps its earlier invoker.
        EXPECT_NE(nullptr, invoker.GetModuleInvoker(row.task));
    }
    EXPECT_NO_THROW(invoker.InitTask(static_cast<QVR_IC_INVOKER_TASKS>(5), none, 1, false));
}

// A phase invoker that throws from Process.
class ThrowingModuleInvoker : public IQVRModuleInvoker {
public:
    explicit ThrowingModuleInvoker(bool badAlloc) : m_badAlloc(badAlloc) {}
    bool Process() override {
        if (m_badAlloc) throw std::bad_alloc();
        throw CQVRICException("qvr_phase.cpp", 9, "Process", "phase failed", "CQVRICException");
    }
    bool EndProcess() override { return true; }

private:
    bool m_badAlloc;
};

TEST_F(CQVRICInvokerTest, ProcessInventoryAddsItsFrameOrConvertsBadAlloc) {
    const std::vector<CQVRModuleDetail*> none;
    {
        ScriptedInvoker invoker(nullptr, &manager, &list);
        invoker.next = new ThrowingModuleInvoker(false);
        invoker.InitTask(QVR_IC_INVOKER_PRE_INSTALL, none, 0, false);
        try {
            invoker.ProcessInventory();
            ADD_FAILURE() << "no exception";
        } catch (const CQVRICException& e) {
            const std::string text = e.what();
            EXPECT_EQ(0u,
                      text.find("CQVRICException - [phase failed]\n\t at Process(qvr_phase.cpp:9)]\n\t at "
                                "ProcessInventory(qvr_ModularIC/Invoker/src/CQVRICInvoker:"))
                << text;
        }
    }
    {
        ScriptedInvoker invoker(nullptr, &manager, &list);
        invoker.next = new ThrowingModuleInvoker(true);
        invoker.InitTask(QVR_IC_INVOKER_POST_INSTALL, none, 0, false);
        try {
            invoker.ProcessInventory();
            ADD_FAILURE() << "no exception";
        } catch (const CQVRBadAllocException& e) {
            const std::string text = e.what();
            EXPECT_EQ(0u, text.find(std::string(std::bad_alloc().what()) +
                                    " qvr_ModularIC/Invoker/src/CQVRICInvoker ProcessInventory "))
                << text;
            EXPECT_EQ('\n', text.back());
        }
    }
}

// Real script modules append start and end markers to one log, so the order
// of phases can be read back.
class CQVRICInvokerPhaseTest : public ::testing::Test {
protected:
    CQVRModuleDetail* Script(const std::string& name, const std::string& type, double sleepSeconds) {
        const std::string moduleDir = dir.Sub(name);
        invoker_test::MakeDir(moduleDir);
        std::ostringstream body;
        body << "echo start-" << name << " >> " << Log() << "\n"
             << "sleep " << sleepSeconds << "\n"
             << "echo end-" << name << " >> " << Log() << "\n"
             << "echo '<SVMInventory>" << name << "</SVMInventory>'\n";
        invoker_test::WriteScript(moduleDir, "mod.sh", body.str());
        CQVRModuleDetail* detail = new CQVRModuleDetail();
        detail->configuredDir = name;
        detail->workingDir = moduleDir;
        detail->type = type;
        detail->commandLine = "mod.sh";
        return detail;
    }
    std::string Log() const { return dir.Sub("phases.log"); }
    std::vector<std::string> LogLines() const {
        std::vector<std::string> lines;
        std::istringstream text(invoker_test::ReadFile(Log()));
        for (std::string line; std::getline(text, line);) lines.push_back(line);
        return lines;
    }
    static size_t IndexOf(const std::vector<std::string>& lines, const std::string& line) {
        auto it = std::find(lines.begin(), lines.end(), line);
        return it == lines.end() ? static_cast<size_t>(-1) : static_cast<size_t>(it - lines.begin());
    }

    invoker_test::CwdRestorer restoreCwd;
    invoker_test::TempDir dir;
    RecordingDataModelManager manager;
    CQVRModuleList list;
};

TEST_F(CQVRICInvokerPhaseTest, PhasesRunInOrderAndPooledPhasesOverlap) {
    list.AddPreInventoryList(Script("pre", "cli", 0.2));
    list.AddPriorityList(Script("prio", "cli", 0.5));
    list.AddModuleList(Script("par", "cli", 0.5));
    list.AddSerialRunModuleList(Script("ser1", "cli", 0.3));
    list.AddSerialRunModuleList(Script("ser2", "cli", 0.1));
    list.AddPostInventoryList(Script("post", "cli", 0.0));

    CQVRICInvoker invoker(nullptr, &manager, &list, 20);
    EXPECT_EQ(4, manager.GetTotalInvComponents());
    EXPECT_EQ(0u, invoker.ProcessInventory());

    const std::vector<std::string> lines = LogLines();
    ASSERT_EQ(12u, lines.size()) << invoker_test::ReadFile(Log());
    const std::vector<std::string> pooled{"prio", "par", "ser1"};
    for (const std::string& name : pooled) {
        EXPECT_LT(IndexOf(lines, "end-pre"), IndexOf(lines, "start-" + name)) << name;
        EXPECT_LT(IndexOf(lines, "end-ser2"), IndexOf(lines, "start-post"));
        EXPECT_LT(IndexOf(lines, "end-" + name), IndexOf(lines, "start-post")) << name;
        // Every pooled phase had started before any of them ended.
        for (const std::string& other : pooled) {
            EXPECT_LT(IndexOf(lines, "start-" + name), IndexOf(lines, "end-" + other))
                << name << " " << other;
        }
    }
    // The serial phase has one thread: its modules run in list order.
    EXPECT_LT(IndexOf(lines, "end-ser1"), IndexOf(lines, "start-ser2"));

    std::vector<std::string> ids = manager.Identities();
    std::sort(ids.begin(), ids.end());
    EXPECT_EQ((std::vector<std::string>{"par", "prio", "ser1", "ser2"}), ids);
    for (const auto& write : manager.Writes()) {
        EXPECT_EQ("<SVMInventory>" + write.first + "</SVMInventory>\n", write.second);
    }
    EXPECT_TRUE(invoker_test::HasNoChildren());
}

TEST_F(CQVRICInvokerPhaseTest, ModulesOverTheLimitReportEmptyOutputAndPostInstallStillRuns) {
    list.AddModuleList(Script("slow", "cli", 30));
    list.AddModuleList(Script("fast", "cli", 0));
    list.AddModuleList(Script("library", "lib", 0));
    list.AddPostInventoryList(Script("post", "cli", 0));
    CQVRICInvoker invoker(nullptr, &manager, &list, 1);
    EXPECT_EQ(3, manager.GetTotalInvComponents());
    EXPECT_EQ(0u, invoker.ProcessInventory());
    auto writes = manager.Writes();
    std::sort(writes.begin(), writes.end());
    ASSERT_EQ(2u, writes.size());
    EXPECT_EQ("fast", writes[0].first);
    EXPECT_EQ("<SVMInventory>fast</SVMInventory>\n", writes[0].second);
    EXPECT_EQ("slow", writes[1].first);
    EXPECT_EQ("", writes[1].second);
    const std::vector<std::string> lines = LogLines();
    EXPECT_NE(static_cast<size_t>(-1), IndexOf(lines, "end-post"));
    EXPECT_EQ(static_cast<size_t>(-1), IndexOf(lines, "end-slow"));
    EXPECT_EQ(static_cast<size_t>(-1), IndexOf(lines, "start-library"));
    EXPECT_TRUE(invoker_test::HasNoChildren());
}

}  // namespace

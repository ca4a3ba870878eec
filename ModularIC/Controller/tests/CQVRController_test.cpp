#include "CQVRController.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <functional>
#include <regex>

#include "CLockManager.h"
#include "ConfigTestSupport.h"
#include "FakeShmApi.h"
#include "IQVRGenerationSource.h"
#include "QVRArgumentList.h"
#include "QVRMain.h"
#include "TestArgv.h"

namespace {

// Takes the lock through a function of the test and marks each release on
// standard error, so a test sees whether it came after the messages.
class FakeLockManager : public CLockManager {
public:
    explicit FakeLockManager(std::function<int()> lock) : m_lock(std::move(lock)) {}
    int ProcessLock() override { return m_lock(); }
    void ReleaseProcessLock(int handle) override { std::fprintf(stderr, "<released %d>", handle); }

private:
    std::function<int()> m_lock;
};

// Generation names as a management controller might have answered, without asking one.
struct FakeGenerations : IQVRGenerationSource {
    void GetGenerations(std::set<std::string>& out) override { out = names; }
    std::set<std::string> names = {"GenPre12G"};
};

// Configures, in the current directory, one generation-independent module that prints the text.
void WriteModule(const ConfigDir& dir, const std::string& output) {
    dir.Write(R"({"SorVikConfig": {"Generation": [{"_type": "Generic", "InvComponent": [)"
              R"({"_dir": "/mod", "_type": "cli", "__text": "mod.sh", "#GUID": "1"}]}]}})");
    ::mkdir("mod", 0755);
    std::ofstream("mod/mod.sh") << "#!/bin/sh\ncat <<'EOF'\n" + output + "\nEOF\n";
    ::chmod("mod/mod.sh", 0755);
}

const char kSource[] = R"(qvr_ModularIC/Controller/src/CQVRController\.cpp)";
const key_t kShmKey = 0x94D553DF;

class CQVRControllerTest : public ::testing::Test {
protected:
    CQVRController* NewController() {
        return new CQVRController(new FakeLockManager([this] {
                                      if (onLock) onLock();
                                      return lockResult;
                                  }),
                                  &generations, &shm);
    }
    // Runs the entry point, by default on a controller with the fake lock, and keeps what it printed.
    int Main(std::vector<std::string> words, QVRControllerFactory factory = nullptr) {
        QVRArgumentList::GetInstance()->Clear();
        if (!factory) factory = [this] { return std::unique_ptr<CQVRController>(NewController()); };
        words.insert(words.begin(), "sorvik");
        TestArgv args(words);
        ::testing::internal::CaptureStdout();
        ::testing::internal::CaptureStderr();
        const int status = QVRMain(args.argc(), args.argv(), factory);
        printed = ::testing::internal::GetCapturedStdout();
        errors = ::testing::internal::GetCapturedStderr();
        return status;
    }

    FakeGenerations generations;
    int lockResult = 5;
    std::function<void()> onLock;  // may throw
    std::string printed, errors;
    FakeShmApi shm;  // progress never reaches the machine-wide segment from here
};

struct StatusRow {
    std::vector<std::string> words;
    int lockResult;
    std::function<void()> onLock;
    int status;
    std::string errors;
};

// Single options, rejected lines and another active instance are run end to end.
TEST_F(CQVRControllerTest, ExitStatusAndMessagesAroundTheLock) {
    const std::vector<StatusRow> rows = {
        {{}, -2, nullptr, 4, ""},
        {{"-p"}, -2, nullptr, 4, ""},
        // Nothing running: the lock is taken and given back after the message.
        {{"-p"}, 6, nullptr, 0, "No Instance of Inventory Collector is active \n<released 6>"},
        // Only the collector's own exception is reported.
        {{}, 5, [] { throw std::bad_alloc(); }, 2, ""},
        {{}, 5, [] { throw std::runtime_error("x"); }, 2, ""}};
    for (const StatusRow& row : rows) {
        lockResult = row.lockResult;
        onLock = row.onLock;
        const std::string name = ::testing::PrintToString(row.words) + " " + std::to_string(row.lockResult);
        EXPECT_EQ(Main(row.words), row.status) << name;
        EXPECT_EQ(errors, row.errors) << name;
    }
    EXPECT_EQ(Main({}, []() -> std::unique_ptr<CQVRController> { throw std::bad_alloc(); }), 2);
    EXPECT_EQ(printed + errors, "");
}

TEST_F(CQVRControllerTest, ConfigurationFailureExitsTwoAndCollectedRecordsExitOne) {
    ConfigDir dir;  // no configuration file yet
    EXPECT_EQ(Main({}), 2);
    const std::string at = R"(\]\n\t at )", frame = std::string(R"(\()") + kSource + R"(:\d+\))";
    const std::string pattern =
        R"(<released 5>Caught IC Exception in main : CQVRICException - \[Error occurred during )"
        R"(parsing icconfig\.json file)" +
        at + "PopulateModuleList" + frame + at + "PopulateModuleList" + frame + at + "GetICInventory" +
        frame + "\n";
    EXPECT_TRUE(std::regex_match(errors, std::regex(pattern))) << errors;

    // Records collected: result 1, which has no message and is the exit status.
    WriteModule(dir,
                R"(<SVMInventory><Device componentID="7" display="d">)"
                R"(<Application componentType="FRMW" version="2" display="fw"/></Device></SVMInventory>)");
    EXPECT_EQ(Main({}), 1);
    EXPECT_NE(printed.find(R"(<Device display="d" componentID="7">)"), std::string::npos) << printed;
    EXPECT_EQ(errors, "<released 5>");
    FakeShmApi::Write counters;
    ASSERT_TRUE(shm.Read(kShmKey, &counters));
    EXPECT_EQ(counters.total + counters.completed, 2);
}

}  // namespace

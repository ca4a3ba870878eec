#include <dirent.h>
#include <signal.h>
#include <unistd.h>

#include <chrono>
#include <cstdlib>
#include <fstream>
#include <future>
#include <iterator>
#include <memory>
#include <sstream>
#include <thread>

#include "CollectionSupport.h"

namespace collection {
namespace {

using Clock = std::chrono::steady_clock;

// The fields of /proc/<pid>/stat after the command name: state first.
std::vector<std::string> StatFields(pid_t pid) {
    std::ifstream in("/proc/" + std::to_string(pid) + "/stat");
    const std::string text{std::istreambuf_iterator<char>(in), {}};
    std::istringstream rest(text.substr(text.rfind(')') + 1));
    std::vector<std::string> fields;
    for (std::string field; rest >> field;) fields.push_back(field);
    return fields;
}

// Gone, or a zombie waiting for whoever inherited it.
bool IsDead(pid_t pid) {
    const std::vector<std::string> fields = StatFields(pid);
    return fields.empty() || fields[0] == "Z";
}

bool DiesWithin(pid_t pid, std::chrono::milliseconds limit) {
    for (const auto until = Clock::now() + limit; Clock::now() < until;) {
        if (IsDead(pid)) return true;
        std::this_thread::sleep_for(std::chrono::milliseconds(10));
    }
    return IsDead(pid);
}

class InterruptTest : public CollectionTest {
protected:
    // Each module notes its own pid and its background child's, then waits for
    // both; one more module ends at once, so the progress segment exists.
    void InstallSleepers(int count) {
        std::vector<Module> modules{Module{"quick", Emit(DeviceDoc("q"))}};
        for (int i = 0; i < count; ++i) {
            const std::string pids = dir.PathOf("pids" + std::to_string(i));
            modules.emplace_back("m" + std::to_string(i),
                                 "sleep 60 &\necho \"$$ $!\" > '" + pids + ".tmp'\nmv '" + pids + ".tmp' '" +
                                     pids + "'\nwait\n" + Emit(DeviceDoc(std::to_string(i))));
        }
        Install(GenericOnly(modules));
    }

    // The pids noted by every module once all are running; empty after 10 s.
    std::vector<pid_t> WaitForModules(int count) {
        for (const auto until = Clock::now() + std::chrono::seconds(10); Clock::now() < until;) {
            std::vector<pid_t> pids;
            for (int i = 0; i < count && dir.Exists("pids" + std::to_string(i)); ++i) {
                std::istringstream line(dir.ReadFile("pids" + std::to_string(i)));
                for (long pid; line >> pid;) pids.push_back(static_cast<pid_t>(pid));
            }
            if (pids.size() == static_cast<std::size_t>(2 * count)) return pids;
            std::this_thread::sleep_for(std::chrono::milliseconds(20));
        }
        return {};
    }
};

TEST_F(InterruptTest, EachSignalEndsEveryModuleGroupReleasesTheLockAndExitsAtOnce) {
    const struct {
        int sig;
        bool toGroup;  // as a terminal's Ctrl-C does
    } cases[] = {{SIGINT, false}, {SIGTERM, false}, {SIGHUP, false}, {SIGINT, true}};
    const int modules = 3;
    InstallSleepers(modules);
    for (const auto& c : cases) {
        SCOPED_TRACE(std::string(strsignal(c.sig)) + (c.toGroup ? " to the group" : ""));
        for (int i = 0; i < modules; ++i) ::unlink(dir.PathOf("pids" + std::to_string(i)).c_str());
        std::future<ProcessResult> run =
            std::async(std::launch::async, [this] { return Run({"-outc=" + dir.PathOf("inv.xml")}); });
        const std::vector<pid_t> pids = WaitForModules(modules);
        ASSERT_FALSE(pids.empty()) << "the modules never started";
        const std::vector<std::string> moduleStat = StatFields(pids[0]);
        ASSERT_GT(moduleStat.size(), 2u);
        const pid_t group = static_cast<pid_t>(std::atol(moduleStat[2].c_str()));
        // The module's group leader is the shell the collector started.
        const pid_t collector = static_cast<pid_t>(std::atol(StatFields(group)[1].c_str()));
        ASSERT_TRUE(PathExists(kLockFile));
        for (int i = 0; i < 500 && !ProgressSegmentExists(); ++i)
            std::this_thread::sleep_for(std::chrono::milliseconds(10));
        ASSERT_TRUE(ProgressSegmentExists());

        const auto sent = Clock::now();
        ASSERT_EQ(::kill(c.toGroup ? -collector : collector, c.sig), 0);
        ASSERT_EQ(run.wait_for(std::chrono::seconds(5)), std::future_status::ready);
        const auto took = Clock::now() - sent;
        const ProcessResult result = run.get();
        EXPECT_EQ(result.exitStatus, 128 + c.sig);
        EXPECT_LT(took, std::chrono::seconds(1));
        EXPECT_EQ(result.err, "");
        EXPECT_FALSE(PathExists(kLockFile));
        // A -progress after it must not report the dead run's counters.
        EXPECT_FALSE(ProgressSegmentExists());
        EXPECT_FALSE(dir.Exists("inv.xml"));
        for (pid_t pid : pids) {
            EXPECT_TRUE(DiesWithin(pid, std::chrono::milliseconds(500)))
                << "module process " << pid << " survived";
            if (!IsDead(pid)) ::kill(pid, SIGKILL);
        }
    }
}

// The temporary file a document is written to while a signal ends the run.
std::string TemporaryFile(const TempDir& dir) {
    std::unique_ptr<DIR, int (*)(DIR*)> listing(::opendir(dir.Path().c_str()), ::closedir);
    while (const struct dirent* entry = listing ? ::readdir(listing.get()) : nullptr) {
        const std::string name = entry->d_name;
        if (name.compare(0, 9, ".inv.xml.") == 0) return name;
    }
    return "";
}

TEST_F(InterruptTest, ASignalWhileTheInventoryIsWrittenLeavesNoTemporaryFileLockOrSegment) {
    // Enough devices that writing them takes a good part of a second.
    Install(GenericOnly({Module{"many",
                                "echo '<SVMInventory>'\n"
                                "seq 1 150000 | awk '{print \"<Device componentID=\\\"\" $1 \"\\\" "
                                "display=\\\"D\\\"><Application componentType=\\\"FRMW\\\" "
                                "version=\\\"1\\\" display=\\\"A\\\"/></Device>\"}'\n"
                                "echo '</SVMInventory>'\n"}}));
    for (const int sig : {SIGINT, SIGTERM, SIGHUP}) {
        SCOPED_TRACE(strsignal(sig));
        dir.WriteFile("inv.xml", "old inventory");
        ::unlink(dir.PathOf("collector.pid").c_str());
        std::future<ProcessResult> run = std::async(std::launch::async, [this] {
            return Run({"-outc=" + dir.PathOf("inv.xml")}, {}, "echo $$ > collector.pid\nexec \"$@\"");
        });
        std::string temporary;
        for (const auto until = Clock::now() + std::chrono::seconds(30);
             temporary.empty() && Clock::now() < until;)
            temporary = TemporaryFile(dir);
        ASSERT_FALSE(temporary.empty()) << "no temporary file seen";
        const pid_t collector = static_cast<pid_t>(std::atol(dir.ReadFile("collector.pid").c_str()));
        ASSERT_EQ(::kill(collector, sig), 0);
        const ProcessResult result = run.get();
        EXPECT_EQ(result.exitStatus, 128 + sig) << "the run ended before the signal";
        EXPECT_FALSE(dir.Exists(temporary));
        EXPECT_EQ(TemporaryFile(dir), "");
        EXPECT_EQ(dir.ReadFile("inv.xml"), "old inventory");
        EXPECT_FALSE(PathExists(kLockFile));
        EXPECT_FALSE(ProgressSegmentExists());
    }
}

}  // namespace
}  // namespace collection

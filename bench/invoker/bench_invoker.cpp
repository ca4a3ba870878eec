// Runs N generated modules, each sleeping t seconds and then printing a small
// inventory, through CQVRICInvoker, and compares the wall time with the ideal
// ceil(N / threads) * t and the collector's own CPU time per module.
//
//   bench_invoker [--modules N] [--seconds T] [--runs R] [--serial S] [--priority P]
//
// Modules go to the parallel list unless --serial/--priority move some of them.
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <mutex>
#include <sstream>
#include <string>
#include <vector>

#include "CQVRICInvoker.h"
#include "CQVRModuleList.h"
#include "QVRDataModelManager.h"

namespace {

// Counts what the modules hand over; keeps the benchmark off the machine-wide
// progress segment that the real store writes.
class CountingManager : public QVRDataModelManager {
public:
    // Never publishes: WriteData below does not reach the store.
    CountingManager() : QVRDataModelManager(IQVRShmApi::Real()) {}
    using QVRDataModelManager::WriteData;
    bool WriteData(std::string& moduleIdentity, std::string& output) override {
        std::lock_guard<std::mutex> lock(m_mutex);
        ++writes;
        if (output.find("<SVMInventory") != std::string::npos &&
            output.find(moduleIdentity) != std::string::npos) {
            ++goodOutputs;
        }
        bytes += output.size();
        return true;
    }
    void Reset() {
        writes = goodOutputs = 0;
        bytes = 0;
    }
    int writes = 0;
    int goodOutputs = 0;
    size_t bytes = 0;

private:
    std::mutex m_mutex;
};

struct Options {
    int modules = 64;
    double seconds = 0.5;
    int runs = 3;
    int serial = 0;
    int priority = 0;
};

double CpuSeconds(int who) {
    rusage usage{};
    getrusage(who, &usage);
    return usage.ru_utime.tv_sec + usage.ru_stime.tv_sec +
           (usage.ru_utime.tv_usec + usage.ru_stime.tv_usec) / 1e6;
}

std::string Inventory(const std::string& name) {
    std::ostringstream xml;
    xml << "<SVMInventory lang=\"en\">\n"
        << "  <Device componentID=\"" << name << "\" display=\"Bench device " << name
        << "\" vendorID=\"8086\" deviceID=\"1572\" subVendorID=\"1028\" subDeviceID=\"1f99\" bus=\"1\" "
           "device=\"0\" function=\"0\">\n"
        << "    <Application componentType=\"FRMW\" version=\"1.2.3\" display=\"Firmware\"/>\n"
        << "  </Device>\n"
        << "  <System systemID=\"0A1B\"/>\n"
        << "</SVMInventory>\n";
    return xml.str();
}

bool WriteModule(const std::string& dir, const std::string& name, double seconds) {
    if (mkdir(dir.c_str(), 0755) != 0) return false;
    const std::string path = dir + "/inv.sh";
    std::ofstream script(path);
    script << "#!/bin/sh\nsleep " << seconds << "\ncat <<'EOF'\n" << Inventory(name) << "EOF\n";
    script.close();
    return script && chmod(path.c_str(), 0755) == 0;
}

bool ParseArgs(int argc, char** argv, Options& options) {
    for (int i = 1; i < argc; ++i) {
        const std::string arg = argv[i];
        if (i + 1 >= argc) return false;
        const char* value = argv[++i];
        if (arg == "--modules") {
            options.modules = std::atoi(value);
        } else if (arg == "--seconds") {
            options.seconds = std::atof(value);
        } else if (arg == "--runs") {
            options.runs = std::atoi(value);
        } else if (arg == "--serial") {
            options.serial = std::atoi(value);
        } else if (arg == "--priority") {
            options.priority = std::atoi(value);
        } else {
            return false;
        }
    }
    return options.modules > 0 && options.seconds >= 0 && options.runs > 0 && options.serial >= 0 &&
           options.priority >= 0 && options.serial + options.priority <= options.modules;
}

}  // namespace

int main(int argc, char** argv) {
    Options options;
    if (!ParseArgs(argc, argv, options)) {
        std::fprintf(stderr, "usage: %s [--modules N] [--seconds T] [--runs R] [--serial S] [--priority P]\n",
                     argv[0]);
        return 2;
    }
    char pattern[] = "/tmp/bench-invoker-XXXXXX";
    if (mkdtemp(pattern) == nullptr) {
        std::perror("mkdtemp");
        return 1;
    }
    const std::string root = pattern;

    CQVRModuleList list;
    for (int i = 0; i < options.modules; ++i) {
        const std::string name = "mod" + std::to_string(i);
        const std::string dir = root + "/" + name;
        if (!WriteModule(dir, name, options.seconds)) {
            std::fprintf(stderr, "cannot write module %s\n", dir.c_str());
            return 1;
        }
        CQVRModuleDetail* detail = new CQVRModuleDetail();
        detail->configuredDir = name;
        detail->workingDir = dir;
        detail->type = "cli";
        detail->commandLine = "inv.sh";
        if (i < options.priority) {
            list.AddPriorityList(detail);
        } else if (i < options.priority + options.serial) {
            list.AddSerialRunModuleList(detail);
        } else {
            list.AddModuleList(detail);
        }
    }

    unsigned long priorityThreads = 0, parallelThreads = 0, serialThreads = 0;
    CQVRICInvoker::ComputeThreadBudget(list.GetSizePriorityList(), list.GetSizeModuleList(),
                                       list.GetSizeSerialRunModuleList(), priorityThreads, parallelThreads,
                                       serialThreads);
    // Each phase takes ceil(size / threads) rounds; the phases run side by side.
    auto rounds = [](unsigned long size, unsigned long threads) {
        return threads == 0 ? 0.0 : std::ceil(static_cast<double>(size) / threads);
    };
    const double ideal =
        options.seconds * std::max({rounds(list.GetSizePriorityList(), priorityThreads),
                                    rounds(list.GetSizeModuleList(), parallelThreads),
                                    rounds(list.GetSizeSerialRunModuleList(), serialThreads)});

    std::printf(
        "bench_invoker: %d modules of %.3f s; threads priority/parallel/serial %lu/%lu/%lu; ideal %.3f s\n",
        options.modules, options.seconds, priorityThreads, parallelThreads, serialThreads, ideal);
    std::printf("%-4s %10s %10s %14s %14s %8s\n", "run", "wall s", "over %", "cpu/module ms", "child cpu s",
                "outputs");

    CountingManager manager;
    const std::string startDir = [] {
        char buffer[4096];
        return std::string(getcwd(buffer, sizeof(buffer)) != nullptr ? buffer : "/");
    }();
    std::vector<double> walls, cpus;
    bool allOutputs = true;
    for (int run = 0; run < options.runs; ++run) {
        manager.Reset();
        const double cpuBefore = CpuSeconds(RUSAGE_SELF);
        const double childBefore = CpuSeconds(RUSAGE_CHILDREN);
        const auto start = std::chrono::steady_clock::now();
        {
            CQVRICInvoker invoker(nullptr, &manager, &list);
            invoker.ProcessInventory();
        }
        const double wall = std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
        const double cpuPerModule = (CpuSeconds(RUSAGE_SELF) - cpuBefore) / options.modules;
        const double childCpu = CpuSeconds(RUSAGE_CHILDREN) - childBefore;
        walls.push_back(wall);
        cpus.push_back(cpuPerModule);
        allOutputs = allOutputs && manager.goodOutputs == options.modules;
        std::printf("%-4d %10.3f %10.2f %14.3f %14.3f %5d/%d\n", run + 1, wall,
                    ideal > 0 ? (wall / ideal - 1) * 100 : 0.0, cpuPerModule * 1e3, childCpu,
                    manager.goodOutputs, options.modules);
        if (chdir(startDir.c_str()) != 0) {
        }
    }
    std::sort(walls.begin(), walls.end());
    std::sort(cpus.begin(), cpus.end());
    const double medianWall = walls[walls.size() / 2];
    const double medianCpu = cpus[cpus.size() / 2];
    const bool wallOk = ideal <= 0 || medianWall <= ideal * 1.01;
    const bool cpuOk = medianCpu < 0.001;
    std::printf(
        "median: wall %.3f s (%+.2f%% of ideal %.3f s, target within 1%%: %s); "
        "cpu/module %.3f ms (target < 1 ms: %s); outputs %s\n",
        medianWall, ideal > 0 ? (medianWall / ideal - 1) * 100 : 0.0, ideal, wallOk ? "met" : "MISSED",
        medianCpu * 1e3, cpuOk ? "met" : "MISSED", allOutputs ? "all complete" : "INCOMPLETE");

    const std::string cleanup = "rm -rf '" + root + "'";
    if (std::system(cleanup.c_str()) != 0) std::fprintf(stderr, "could not remove %s\n", root.c_str());
    return allOutputs ? 0 : 1;
}

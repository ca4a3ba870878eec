#include "audit/fleet/FleetCommands.h"

#include <memory>

#include "audit/DocumentReader.h"
#include "audit/fleet/Drift.h"
#include "audit/fleet/FleetCheck.h"
#include "audit/fleet/FleetLoader.h"
#include "audit/fleet/FleetStore.h"
#include "audit/fleet/ProgressPrinter.h"

namespace audit {
namespace fleet {

namespace {

bool Open(const std::string& url, std::unique_ptr<FleetStore>& store, std::ostream& err) {
    std::string error;
    if (OpenFleetStore(url, store, error)) return true;
    err << "sorvik-audit: " << error << '\n';
    return false;
}

}  // namespace

int RunLoad(const std::string& url, const std::string& host, const std::vector<std::string>& arguments,
            std::ostream& err, bool terminal) {
    std::vector<std::string> problems;
    std::vector<std::string> files = FleetLoader::ListInventories(arguments, problems);
    std::unique_ptr<FleetStore> store;
    if (!Open(url, store, err)) return 2;
    FleetLoader loader(*store, {ParseInventory, ReadErrorDocument});
    ProgressPrinter printer(err);
    LoadProgress progress;
    if (terminal) progress = [&printer](std::size_t done, std::size_t total) { printer.Update(done, total); };
    LoadSummary summary = loader.Load(files, host, progress);
    printer.Finish();
    problems.insert(problems.end(), summary.failures.begin(), summary.failures.end());
    for (const std::string& problem : problems) err << "sorvik-audit: " << problem << '\n';
    if (terminal) {
        err << "loaded " << summary.added << ", already stored " << summary.unchanged << ", failed "
            << problems.size() << '\n';
    }
    return problems.empty() ? 0 : 1;
}

int RunDrift(const std::string& url, const std::string& format, double maxSharePercent, std::ostream& out,
             std::ostream& err) {
    std::unique_ptr<FleetStore> store;
    if (!Open(url, store, err)) return 2;
    std::vector<DriftGroup> groups;
    std::string error;
    if (!ComputeDrift(*store, maxSharePercent, groups, error)) {
        err << "sorvik-audit: " << error << '\n';
        return 2;
    }
    if (format == "json") {
        WriteDriftJson(groups, maxSharePercent, out);
    } else {
        WriteDriftTable(groups, out);
    }
    return 0;
}

int RunFleetCheck(const std::string& url, const std::string& baselinePath, const std::string& format,
                  std::ostream& out, std::ostream& err) {
    if (format != "table" && format != "json") {
        err << "sorvik-audit: check --db writes table or json, not " << format << '\n';
        return 2;
    }
    Baseline baseline;
    std::string error;
    if (!LoadBaseline(baselinePath, baseline, error)) {
        err << "sorvik-audit: " << error << '\n';
        return 2;
    }
    std::unique_ptr<FleetStore> store;
    if (!Open(url, store, err)) return 2;
    std::vector<HostCheck> hosts;
    if (!CheckFleet(*store, baseline, hosts, error)) {
        err << "sorvik-audit: " << error << '\n';
        return 2;
    }
    if (format == "json") {
        WriteFleetCheckJson(hosts, out);
    } else {
        WriteFleetCheckTable(hosts, out);
    }
    return FleetCompliant(hosts) ? 0 : 1;
}

}  // namespace fleet
}  // namespace audit

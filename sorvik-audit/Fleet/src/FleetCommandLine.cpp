#include "audit/fleet/FleetCommandLine.h"

#include <unistd.h>

#include "audit/fleet/FleetCommands.h"
#include "audit/fleet/FleetStore.h"

namespace audit {
namespace fleet {

FleetCommandLine::FleetCommandLine(CLI::App& app, CLI::App& check)
    : loadUrl_(kDefaultStoreUrl), driftUrl_(kDefaultStoreUrl) {
    const char* dbHelp = "sqlite:PATH or a PostgreSQL URI or conninfo string";
    load_ = app.add_subcommand("load", "Load inventories into the fleet store");
    load_->add_option("--db", loadUrl_, dbHelp)->capture_default_str();
    load_->add_option("--host", host_, "The host of every file (default: the file name)");
    load_->add_option("INVENTORY_OR_DIRECTORY", arguments_, "Inventory files or directories")->required();

    drift_ = app.add_subcommand("drift", "Versions of like components across the fleet");
    drift_->add_option("--db", driftUrl_, dbHelp)->capture_default_str();
    drift_->add_option("--format", format_, "table or json")
        ->check(CLI::IsMember({"table", "json"}))
        ->capture_default_str();
    drift_->add_option("--max-share", maxShare_, "Outliers run a version fewer than PCT % of the group run")
        ->check(CLI::Range(0.0, 100.0))
        ->capture_default_str();

    CLI::Option* inventories = check.get_option("INVENTORY");
    inventories->required(false);
    checkDb_ =
        check.add_option("--db", checkUrl_, "Check every host's latest collection in this fleet store");
    checkDb_->excludes(inventories);
    // What applies to inventories given one by one means nothing over a store.
    for (const char* name : {"--errors", "--output", "--all"}) checkDb_->excludes(check.get_option(name));
    CLI::Option* db = checkDb_;
    check.parse_complete_callback([inventories, db] {
        if (inventories->count() == 0 && db->count() == 0) throw CLI::RequiredError("INVENTORY or --db");
    });
}

bool FleetCommandLine::Selected() const { return *load_ || *drift_ || checkDb_->count() > 0; }

int FleetCommandLine::Run(const CheckOptions& check, std::ostream& out, std::ostream& err) const {
    if (*load_) return RunLoad(loadUrl_, host_, arguments_, err, isatty(STDERR_FILENO) == 1);
    if (*drift_) return RunDrift(driftUrl_, format_, maxShare_, out, err);
    return RunFleetCheck(checkUrl_, check.baseline, check.format, out, err);
}

}  // namespace fleet
}  // namespace audit

// sorvik-audit: checks the collector's inventories against a baseline and
// shows what changed between two runs. The commands live in the library.
#include <CLI/CLI.hpp>

#include "audit/Commands.h"
#include "audit/fleet/FleetCommands.h"

int main(int argc, char** argv) {
    CLI::App app{"Checks sorvik inventories against a baseline and compares two runs.", "sorvik-audit"};
    app.require_subcommand(1);
    audit::CheckOptions check;
    audit::DiffOptions diff;
    CLI::App* checkCommand = audit::AddCheckCommand(app, check);
    CLI::App* diffCommand = audit::AddDiffCommand(app, diff);
    std::string fleetDb;
    int fleetStatus = -1;  // set by a fleet command's run
    audit::fleet::AddFleetCheckOption(*checkCommand, fleetDb);
    audit::fleet::AddFleetCommands(app, fleetStatus);
    try {
        app.parse(argc, argv);
    } catch (const CLI::ParseError& error) {
        return audit::UsageExit(app, error);
    }
    if (fleetStatus >= 0) return fleetStatus;
    const audit::Console console;
    if (*checkCommand && !fleetDb.empty()) {
        return audit::fleet::RunFleetCheck(fleetDb, check.baseline, check.format, *console.out, *console.err);
    }
    if (*checkCommand) return audit::RunCheck(check, console);
    if (*diffCommand) return audit::RunDiff(diff, console);
    return audit::kExitTrouble;
}

// sorvik-audit: checks the collector's inventories against a baseline and
// shows what changed between two runs. The commands live in the library.
#include <CLI/CLI.hpp>

#include "audit/Commands.h"
#include "audit/fleet/FleetCommandLine.h"

int main(int argc, char** argv) {
    CLI::App app{"Checks sorvik inventories against a baseline and compares two runs.", "sorvik-audit"};
    app.require_subcommand(1);
    audit::CheckOptions check;
    audit::DiffOptions diff;
    CLI::App* checkCommand = audit::AddCheckCommand(app, check);
    CLI::App* diffCommand = audit::AddDiffCommand(app, diff);
    const audit::fleet::FleetCommandLine fleet(app, *checkCommand);
    try {
        app.parse(argc, argv);
    } catch (const CLI::ParseError& error) {
        return audit::UsageExit(app, error);
    }
    const audit::Console console;
    if (fleet.Selected()) return fleet.Run(check, *console.out, *console.err);
    if (*checkCommand) return audit::RunCheck(check, console);
    if (*diffCommand) return audit::RunDiff(diff, console);
    return audit::kExitTrouble;
}

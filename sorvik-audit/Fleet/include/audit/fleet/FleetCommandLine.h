#pragma once
// The fleet commands on sorvik-audit's command line: "load" and "drift", and
// "--db" for "check". It holds the options they parse into, so it lives as
// long as the CLI::App it fills.
#include <CLI/CLI.hpp>
#include <ostream>
#include <string>
#include <vector>

#include "audit/Commands.h"

namespace audit {
namespace fleet {

class FleetCommandLine {
public:
    // Adds load and drift to app and --db to check, which then takes either
    // INVENTORY arguments or --db; --db refuses --errors, --output and --all.
    FleetCommandLine(CLI::App& app, CLI::App& check);
    FleetCommandLine(const FleetCommandLine&) = delete;
    FleetCommandLine& operator=(const FleetCommandLine&) = delete;

    // After parsing: whether the command is one of these: load, drift, or
    // check with --db.
    bool Selected() const;

    // Runs the selected command; check's other options come from check.
    // Returns the exit status.
    int Run(const CheckOptions& check, std::ostream& out, std::ostream& err) const;

private:
    CLI::App* load_;
    CLI::App* drift_;
    CLI::Option* checkDb_;
    std::string loadUrl_;
    std::string host_;
    std::vector<std::string> arguments_;
    std::string driftUrl_;
    std::string format_ = "table";
    double maxShare_ = 10;
    std::string checkUrl_;
};

}  // namespace fleet
}  // namespace audit

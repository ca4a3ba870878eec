#include "audit/Commands.h"

#include <unistd.h>

#include <CLI/CLI.hpp>
#include <cstdlib>
#include <iostream>

#include "audit/Baseline.h"
#include "audit/Check.h"
#include "audit/CheckReport.h"
#include "audit/Diff.h"
#include "audit/DiffReport.h"
#include "audit/DocumentReader.h"
#include "audit/Output.h"

namespace audit {
namespace {

int Trouble(const Console& console, const std::string& message) {
    *console.err << "sorvik-audit: " << message << "\n";
    return kExitTrouble;
}

// The report, to standard output or atomically to the file.
bool Emit(const Console& console, const std::string& output, const std::string& text, std::string& error) {
    if (output.empty()) {
        *console.out << text << std::flush;
        if (!*console.out) {
            error = "cannot write to standard output";
            return false;
        }
        return true;
    }
    return WriteFileAtomically(output, text, error);
}

bool ReadErrors(const std::string& path, ErrorDocument& errors, std::string& error) {
    return path.empty() || ReadErrorDocument(path, errors, error);
}

}  // namespace

Console::Console()
    : out(&std::cout),
      err(&std::cerr),
      colour(ColourWanted(isatty(STDOUT_FILENO) == 1, std::getenv("NO_COLOR"))),
      now([] { return std::time(nullptr); }) {}

CLI::App* AddCheckCommand(CLI::App& app, CheckOptions& options) {
    CLI::App* command = app.add_subcommand("check", "Check inventories against a baseline");
    command->add_option("--baseline", options.baseline, "Baseline JSON document")->required();
    command->add_option("--errors", options.errors, "The collector's error document of the run");
    command->add_option("--format", options.format, "table (default), json or prometheus")
        ->check(CLI::IsMember({"table", "json", "prometheus"}));
    command->add_option("-o,--output", options.output, "Write the report to this file, atomically");
    command->add_flag("--all", options.all, "List components no rule matches, as unmatched");
    command->add_option("INVENTORY", options.inventories, "Inventory documents (- for standard input)")
        ->required();
    return command;
}

CLI::App* AddDiffCommand(CLI::App& app, DiffOptions& options) {
    CLI::App* command = app.add_subcommand("diff", "Show what changed between two inventories");
    command->add_option("--errors", options.errors, "The collector's error document of the NEW run");
    command->add_option("--format", options.format, "table (default) or json")
        ->check(CLI::IsMember({"table", "json"}));
    command->add_option("-o,--output", options.output, "Write the report to this file, atomically");
    command->add_option("OLD", options.before, "The earlier inventory")->required();
    command->add_option("NEW", options.after, "The later inventory")->required();
    return command;
}

int UsageExit(CLI::App& app, const CLI::ParseError& error) {
    const int status = app.exit(error);
    return status == 0 ? kExitClean : kExitTrouble;
}

int RunCheck(const CheckOptions& options, const Console& console) {
    std::string error;
    Baseline baseline;
    if (!LoadBaseline(options.baseline, baseline, error)) return Trouble(console, error);
    ErrorDocument errors;
    if (!ReadErrors(options.errors, errors, error)) return Trouble(console, error);
    int standardInputs = 0;
    for (const std::string& path : options.inventories) standardInputs += path == "-";
    if (standardInputs > 1 || (standardInputs == 1 && (options.baseline == "-" || options.errors == "-")))
        return Trouble(console, "standard input (-) can be read once only");
    // Every document is read (and judged as it is read, so a large inventory
    // is never held whole) before anything is written: bad input leaves no
    // partial report behind.
    std::vector<Inventory> inventories(options.inventories.size());
    std::vector<HostVerdicts> hosts;
    for (size_t i = 0; i < inventories.size(); ++i) {
        Inventory& inventory = inventories[i];
        InventoryChecker checker(baseline, inventory, options.all);
        checker.Reserve(ComponentBound(options.inventories[i]));
        const ComponentSink judge = [&checker](Component&& component) { checker.Add(std::move(component)); };
        if (!StreamInventory(options.inventories[i], inventory, judge, error)) return Trouble(console, error);
        // The error document's failures belong to the run; the report lists them with it.
        for (const ModuleFailure& failure : errors.failures) inventory.failures.push_back(failure);
        hosts.push_back({&inventory, checker.Finish(nullptr)});
    }
    std::string text;
    if (options.format == "json")
        text = CheckJson(hosts, baseline.source);
    else if (options.format == "prometheus")
        text = CheckPrometheus(hosts, console.now());
    else
        text = CheckTable(hosts, console.colour && options.output.empty());
    if (!Emit(console, options.output, text, error)) return Trouble(console, error);
    return AllCompliant(hosts) ? kExitClean : kExitFindings;
}

int RunDiff(const DiffOptions& options, const Console& console) {
    std::string error;
    if (options.before == "-" && options.after == "-")
        return Trouble(console, "standard input (-) can be read once only");
    ErrorDocument errors;
    if (!ReadErrors(options.errors, errors, error)) return Trouble(console, error);
    Inventory before, after;
    if (!ReadInventory(options.before, before, error)) return Trouble(console, error);
    if (!ReadInventory(options.after, after, error)) return Trouble(console, error);
    const std::vector<ComponentChange> changes = DiffInventories(before, after, &errors);
    const std::string text = options.format == "json"
                                 ? DiffJson(changes, before, after)
                                 : DiffTable(changes, console.colour && options.output.empty());
    if (!Emit(console, options.output, text, error)) return Trouble(console, error);
    return changes.empty() ? kExitClean : kExitFindings;
}

}  // namespace audit

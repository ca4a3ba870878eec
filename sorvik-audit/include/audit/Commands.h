#pragma once
// The check and diff commands: their options on the command line and their
// runs. main() builds the command line from these and dispatches.
#include <ctime>
#include <functional>
#include <iosfwd>
#include <string>
#include <vector>

namespace CLI {
class App;
class ParseError;
}  // namespace CLI

namespace audit {

// Exit statuses of every command.
constexpr int kExitClean = 0;     // compliant, or no change
constexpr int kExitFindings = 1;  // something not compliant, or changes
constexpr int kExitTrouble = 2;   // bad usage or bad input; nothing was written

// What a run writes to and reads the time from; the standard streams and the
// real clock by default, strings and a fixed time in tests.
struct Console {
    Console();
    std::ostream* out;
    std::ostream* err;
    bool colour;  // standard output is a terminal and NO_COLOR is not set
    std::function<std::time_t()> now;
};

struct CheckOptions {
    std::string baseline;
    std::string errors;
    std::string format = "table";
    std::string output;  // empty: standard output
    bool all = false;
    std::vector<std::string> inventories;
};

struct DiffOptions {
    std::string errors;
    std::string format = "table";
    std::string output;
    std::string before;
    std::string after;
};

CLI::App* AddCheckCommand(CLI::App& app, CheckOptions& options);
CLI::App* AddDiffCommand(CLI::App& app, DiffOptions& options);

// Prints CLI11's message (help to standard output, errors to standard error)
// and returns the exit status: 0 for help, kExitTrouble otherwise.
int UsageExit(CLI::App& app, const CLI::ParseError& error);

int RunCheck(const CheckOptions& options, const Console& console);
int RunDiff(const DiffOptions& options, const Console& console);

}  // namespace audit

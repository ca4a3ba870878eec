#pragma once
// The fleet commands of sorvik-audit: load, drift, and check over a store;
// FleetCommandLine puts them on the command line.
// Exit statuses: 0 done (check: every matched component compliant), 1 some
// files not loaded (check: some component not compliant), 2 bad usage, a
// store that cannot be opened, or bad input.
#include <ostream>
#include <string>
#include <vector>

namespace audit {
namespace fleet {

// "load": files and directories into the store. Progress goes to err when
// terminal is true; each file not loaded is reported on err by name.
int RunLoad(const std::string& url, const std::string& host, const std::vector<std::string>& arguments,
            std::ostream& err, bool terminal);

// "drift" as "table" or "json".
int RunDrift(const std::string& url, const std::string& format, double maxSharePercent, std::ostream& out,
             std::ostream& err);

// "check --db": the baseline over every host's latest collection, as "table"
// or "json" ("prometheus" is for one inventory and refused).
int RunFleetCheck(const std::string& url, const std::string& baselinePath, const std::string& format,
                  std::ostream& out, std::ostream& err);

}  // namespace fleet
}  // namespace audit

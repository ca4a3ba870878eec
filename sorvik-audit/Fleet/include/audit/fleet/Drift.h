#pragma once
// Version drift across a fleet: for each group of like components over each
// host's latest collection, the versions found and the hosts that run a rare
// one.
#include <cstdint>
#include <ostream>
#include <string>
#include <utility>
#include <vector>

#include "audit/fleet/FleetStore.h"

namespace audit {
namespace fleet {

struct DriftGroup {
    std::string group;  // as ComponentGroup names it
    std::int64_t hosts = 0;
    std::vector<std::pair<std::string, std::int64_t>> versions;  // most hosts first
    std::vector<std::pair<std::string, std::string>> outliers;   // (host, version), by version and host
};

// Groups with more than one version, ordered by group; outliers are hosts
// whose version fewer than maxSharePercent of the group's hosts run.
bool ComputeDrift(FleetStore& store, double maxSharePercent, std::vector<DriftGroup>& groups,
                  std::string& error);

// Aligned text, one block per group.
void WriteDriftTable(const std::vector<DriftGroup>& groups, std::ostream& out);

// {"schemaVersion": 1, "maxShare": PCT, "groups": [{"group": ..., "hosts": N,
// "versions": [{"version": ..., "hosts": N}], "outliers": [{"host": ...,
// "version": ...}]}]}
void WriteDriftJson(const std::vector<DriftGroup>& groups, double maxSharePercent, std::ostream& out);

}  // namespace fleet
}  // namespace audit

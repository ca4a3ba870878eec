#pragma once
// The baseline check over a fleet: every host's latest collection checked as
// one inventory would be, summed per host and per verdict.
#include <map>
#include <ostream>
#include <string>
#include <vector>

#include "audit/Baseline.h"
#include "audit/Check.h"
#include "audit/fleet/FleetStore.h"

namespace audit {
namespace fleet {

struct HostCheck {
    std::string host;
    std::int64_t collectedAt = 0;
    std::map<Verdict, std::size_t> counts;
    std::vector<ComponentVerdict> nonCompliant;  // outdated, newer, unknown and missing, in check order
};

// Checks each host's latest collection; its stored module failures count as
// the inventory's error document. Hosts by name.
bool CheckFleet(FleetStore& store, const Baseline& baseline, std::vector<HostCheck>& hosts,
                std::string& error);

// Whether every matched component of every host is compliant.
bool FleetCompliant(const std::vector<HostCheck>& hosts);

// A table of counts per host, then the non-compliant components.
void WriteFleetCheckTable(const std::vector<HostCheck>& hosts, std::ostream& out);

// {"schemaVersion": 1, "totals": {VERDICT: N}, "hosts": [{"host": ...,
// "collectedAt": SECONDS, "counts": {VERDICT: N}, "components": [{"verdict",
// "name", "componentType", "componentID", "fqdd", "componentInstance",
// "vendorID", "deviceID", "subVendorID", "subDeviceID", "version",
// "expected", "reason"}]}]}
void WriteFleetCheckJson(const std::vector<HostCheck>& hosts, std::ostream& out);

}  // namespace fleet
}  // namespace audit

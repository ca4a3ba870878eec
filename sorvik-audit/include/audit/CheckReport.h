#pragma once
// The check command's output: an aligned table, a versioned JSON report or the
// Prometheus text format. Formats are described in sorvik-audit(1).
#include <ctime>
#include <string>
#include <vector>

#include "audit/Check.h"

namespace audit {

struct HostVerdicts {
    const Inventory* inventory;
    std::vector<ComponentVerdict> verdicts;
};

// Whether every verdict but Unmatched is Compliant.
bool AllCompliant(const std::vector<HostVerdicts>& hosts);

// Columns VERDICT, HOST, TYPE, NAME, VERSION, EXPECTED, REASON, then a
// summary line; colour marks the verdicts when asked.
std::string CheckTable(const std::vector<HostVerdicts>& hosts, bool colour);
// Report version 1.
std::string CheckJson(const std::vector<HostVerdicts>& hosts, const std::string& baseline);
// One sorvik_component_compliant series per matched component and per
// required rule that matched nothing, and the run's time.
std::string CheckPrometheus(const std::vector<HostVerdicts>& hosts, std::time_t now);

// A Prometheus label value with backslash, double quote and line end escaped.
std::string PrometheusLabel(const std::string& value);

}  // namespace audit

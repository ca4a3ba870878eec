#pragma once
// The diff command's output: an aligned table or a versioned JSON report.
#include <string>
#include <vector>

#include "audit/Diff.h"

namespace audit {

// Columns CHANGE, KEY, FROM, TO, then a summary line.
std::string DiffTable(const std::vector<ComponentChange>& changes, bool colour);
// Report version 1.
std::string DiffJson(const std::vector<ComponentChange>& changes, const Inventory& before,
                     const Inventory& after);

}  // namespace audit

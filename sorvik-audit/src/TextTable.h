#pragma once
// Rows of cells printed in aligned columns, widths counted in characters.
#include <functional>
#include <string>
#include <string_view>
#include <vector>

namespace audit {

using TableRow = std::vector<std::string_view>;
// Receives one row and an SGR colour code ("32") for its first cell, or null.
using RowVisitor = std::function<void(const TableRow& cells, const char* colour)>;

// The header and the rows forEach gives, as text: each line's cells padded to
// the column's width plus two blanks, trailing blanks removed. forEach is
// called twice (widths, then text), so no row is stored: a report of 100,000
// components is not copied once more.
std::string RenderTable(const TableRow& header, const std::function<void(const RowVisitor&)>& forEach,
                        bool colour);

}  // namespace audit

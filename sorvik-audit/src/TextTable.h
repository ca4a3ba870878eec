#pragma once
// Rows of cells printed in aligned columns, widths counted in characters.
// Cells are views: the strings they show must outlive the table (a report of
// 100,000 components is not copied once more).
#include <string>
#include <string_view>
#include <vector>

namespace audit {

class TextTable {
public:
    explicit TextTable(std::vector<std::string_view> header);
    // colour: an SGR code ("32") for the first cell, or null.
    void Add(std::vector<std::string_view> cells, const char* colour = nullptr);
    std::string Text(bool colour) const;

private:
    std::vector<std::vector<std::string_view>> m_rows;
    std::vector<const char*> m_colours;
};

}  // namespace audit

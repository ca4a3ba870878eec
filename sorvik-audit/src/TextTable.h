#pragma once
// Rows of cells printed in aligned columns, widths counted in characters.
#include <string>
#include <vector>

namespace audit {

class TextTable {
public:
    explicit TextTable(std::vector<std::string> header);
    // colour: an SGR code ("32") for the first cell, or empty.
    void Add(std::vector<std::string> cells, const std::string& colour = "");
    std::string Text(bool colour) const;

private:
    std::vector<std::vector<std::string>> m_rows;
    std::vector<std::string> m_colours;
};

}  // namespace audit

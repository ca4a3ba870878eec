#include "TextTable.h"

#include <algorithm>

namespace audit {
namespace {

// UTF-8 characters, not bytes: names carry accented letters.
size_t Width(std::string_view text) {
    size_t width = 0;
    for (char c : text)
        if ((static_cast<unsigned char>(c) & 0xC0) != 0x80) ++width;
    return width;
}

}  // namespace

TextTable::TextTable(std::vector<std::string_view> header) {
    m_rows.push_back(std::move(header));
    m_colours.push_back(nullptr);
}

void TextTable::Add(std::vector<std::string_view> cells, const char* colour) {
    m_rows.push_back(std::move(cells));
    m_colours.push_back(colour);
}

std::string TextTable::Text(bool colour) const {
    std::vector<size_t> widths;
    for (const auto& row : m_rows) {
        widths.resize(std::max(widths.size(), row.size()), 0);
        for (size_t i = 0; i < row.size(); ++i) widths[i] = std::max(widths[i], Width(row[i]));
    }
    std::string text;
    size_t total = 0;  // the exact size, so a large report is allocated once
    for (size_t r = 0; r < m_rows.size(); ++r) {
        for (size_t i = 0; i + 1 < m_rows[r].size(); ++i) total += widths[i] + 2;
        if (!m_rows[r].empty()) total += m_rows[r].back().size() + 1;
        if (m_colours[r] != nullptr) total += 16;
    }
    text.reserve(total);
    std::string line;
    for (size_t r = 0; r < m_rows.size(); ++r) {
        const auto& row = m_rows[r];
        line.clear();
        for (size_t i = 0; i < row.size(); ++i) {
            const bool last = i + 1 == row.size();
            const bool marked = colour && i == 0 && m_colours[r] != nullptr;
            if (marked) line += std::string("\033[") + m_colours[r] + "m";
            line += row[i];
            if (marked) line += "\033[0m";
            if (!last) line.append(widths[i] - Width(row[i]) + 2, ' ');
        }
        while (!line.empty() && line.back() == ' ') line.pop_back();
        text += line;
        text += '\n';
    }
    return text;
}

}  // namespace audit

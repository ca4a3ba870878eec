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

std::string RenderTable(const TableRow& header, const std::function<void(const RowVisitor&)>& forEach,
                        bool colour) {
    std::vector<size_t> widths;
    size_t rows = 0, cellBytes = 0;
    const RowVisitor measure = [&](const TableRow& cells, const char*) {
        widths.resize(std::max(widths.size(), cells.size()), 0);
        for (size_t i = 0; i < cells.size(); ++i) widths[i] = std::max(widths[i], Width(cells[i]));
        for (std::string_view cell : cells) cellBytes += cell.size();
        ++rows;
    };
    measure(header, nullptr);
    forEach(measure);
    size_t lineWidth = 0;
    for (size_t width : widths) lineWidth += width + 2;

    std::string text;
    text.reserve(rows * (lineWidth + 16) + cellBytes);  // padding counts characters, cells bytes
    const RowVisitor write = [&](const TableRow& cells, const char* code) {
        const size_t start = text.size();
        for (size_t i = 0; i < cells.size(); ++i) {
            const bool marked = colour && i == 0 && code != nullptr;
            if (marked) text.append("\033[").append(code).append("m");
            text.append(cells[i]);
            if (marked) text.append("\033[0m");
            if (i + 1 < cells.size()) text.append(widths[i] - Width(cells[i]) + 2, ' ');
        }
        while (text.size() > start && text.back() == ' ') text.pop_back();
        text += '\n';
    };
    write(header, nullptr);
    forEach(write);
    return text;
}

}  // namespace audit

#include "tools/support/TextTable.h"

#include <algorithm>

namespace Quorvan::Tools {

namespace {

/// Letters of a text in UTF-8: bytes that don't go on with a letter.
size_t Letters(const std::string& text) {
    return static_cast<size_t>(std::count_if(text.begin(), text.end(), [](char c) {
        return (static_cast<unsigned char>(c) & 0xc0) != 0x80;
    }));
}

}  // namespace

void TextTable::Print(std::ostream& out) const {
    std::vector<size_t> widths;
    for (const auto& row : rows) {
        if (row.size() == 1)
            continue;
        widths.resize(std::max(widths.size(), row.size()), 0);
        for (size_t i = 0; i < row.size(); ++i)
            widths[i] = std::max(widths[i], Letters(row[i]));
    }
    for (const auto& row : rows) {
        std::string line = row.size() == 1 ? row.front() : "";
        for (size_t i = 0; i < row.size() && row.size() > 1; ++i)
            line += row[i] + std::string(widths[i] - Letters(row[i]) + 2, ' ');
        line.erase(line.find_last_not_of(' ') + 1);
        out << line << "\n";
    }
}

}  // namespace Quorvan::Tools

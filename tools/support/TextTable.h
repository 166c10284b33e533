#pragma once

#include <ostream>
#include <string>
#include <vector>

namespace Quorvan::Tools {

/// Lines of text in columns that fit their content. A row of one cell stands across the columns.
class TextTable {
public:
    explicit TextTable(std::vector<std::string> heads) { Add(std::move(heads)); }

    void Add(std::vector<std::string> cells) { rows.push_back(std::move(cells)); }
    void Print(std::ostream& out) const;

private:
    std::vector<std::vector<std::string>> rows;
};

}  // namespace Quorvan::Tools

#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

#include <nlohmann/json.hpp>

namespace Quorvan::Tools {

/// A list in JSON whose entries know their place in the text.
class JsonList {
public:
    struct Entry {
        nlohmann::json value;
        std::string where;  ///< "line 3, column 5"
    };
    /// Throws Failure where text is no such list; what names it in the sentence: 'Automation "x"'.
    JsonList(const std::string& what, std::string_view text);

    const std::vector<Entry>& Entries() const { return entries; }

private:
    std::vector<Entry> entries;
};

}  // namespace Quorvan::Tools

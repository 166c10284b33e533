#pragma once

#include <cstddef>
#include <string_view>

namespace Quorvan::Host {

/// Levels of brackets and braces that our files may have: ours have five.
inline constexpr size_t kDeepestNesting = 64;

/// Whether a JSON text is nested deeper than that. Copying and writing such a text recurse, and
/// would run out of stack; so it has to be seen ahead of parsing.
inline bool IsNestedTooDeep(std::string_view text) {
    size_t depth = 0;
    bool inText = false;
    for (size_t i = 0; i < text.size(); ++i) {
        const char letter = text[i];
        if (inText && letter == '\\')
            ++i;
        else if (letter == '"')
            inText = !inText;
        else if (!inText && (letter == '[' || letter == '{') && ++depth > kDeepestNesting)
            return true;
        else if (!inText && (letter == ']' || letter == '}') && depth > 0)
            --depth;
    }
    return false;
}

}  // namespace Quorvan::Host

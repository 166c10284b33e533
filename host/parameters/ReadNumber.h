#pragma once

#include <charconv>
#include <cstdlib>
#include <optional>
#include <string>
#include <string_view>

namespace Quorvan::Host {

/// The number that a text is, with a point for the decimals whatever the language of the machine;
/// none where it is no number, or one that no double holds.
inline std::optional<double> ReadNumber(std::string_view text) {
    if (text.starts_with('+'))
        text.remove_prefix(1);
    double number = 0.0;
#ifdef __cpp_lib_to_chars
    const auto read = std::from_chars(text.data(), text.data() + text.size(), number);
    const bool isWhole = read.ec == std::errc() && read.ptr == text.data() + text.size();
#else  // libraries that only write numbers so, where nobody sets a language
    const std::string copy(text);
    char* end = nullptr;
    number = std::strtod(copy.c_str(), &end);
    const bool isWhole = !copy.empty() && end == copy.c_str() + copy.size();
#endif
    return isWhole ? std::optional(number) : std::nullopt;
}

}  // namespace Quorvan::Host

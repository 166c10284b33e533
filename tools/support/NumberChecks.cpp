#include "tools/support/NumberChecks.h"

#include <charconv>
#include <cstdint>
#include <optional>
#include <string>
#include <system_error>

#include "host/parameters/Sentence.h"
#include "tools/render/PositionText.h"

namespace Quorvan::Tools {

namespace {

/// Without the decimals that a whole number does not need.
std::string Bound(double number) {
    std::string text = std::to_string(number);
    text.erase(text.find_last_not_of('0') + 1);
    if (text.back() == '.')
        text.pop_back();
    return text;
}

}  // namespace

CLI::Validator NumberFrom(double low, double high) {
    const std::string range = Bound(low) + " to " + Bound(high);
    const auto check = [low, high, range](std::string& text) {
        const std::optional<double> number = PlainNumber(text);
        const bool fits = number && *number >= low && *number <= high;
        return fits ? std::string() : Host::Quoted(text) + " is no number from " + range + ".";
    };
    return {check, range};
}

CLI::Validator WholeNumber() {
    const auto check = [](std::string& text) {
        uint64_t number = 0;
        const char* const end = text.data() + text.size();
        const auto read = std::from_chars(text.data(), end, number);
        if (read.ec != std::errc() || read.ptr != end)
            return Host::Quoted(text) + " is no whole number from 0 to " +
                   std::to_string(UINT64_MAX) + ".";
        text = std::to_string(number);
        return std::string();
    };
    return {check, ""};
}

}  // namespace Quorvan::Tools

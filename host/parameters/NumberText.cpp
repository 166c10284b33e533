#include "host/parameters/NumberText.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <charconv>
#include <cmath>
#include <limits>

#include "host/parameters/ReadNumber.h"

namespace Quorvan::Host {

namespace {

/// A sign that may stand behind a number, and what it makes of the number in the unit.
struct UnitAlias {
    Unit unit;
    std::string_view sign;
    double factor;
};

constexpr std::array kAliases{
    UnitAlias{Unit::None, "", 1.0},
    UnitAlias{Unit::Hertz, "hz", 1.0},
    UnitAlias{Unit::Hertz, "khz", 1000.0},
    UnitAlias{Unit::Hertz, "k", 1000.0},
    UnitAlias{Unit::Hertz, "mhz", 0.001},
    UnitAlias{Unit::Milliseconds, "ms", 1.0},
    UnitAlias{Unit::Milliseconds, "s", 1000.0},
    UnitAlias{Unit::Milliseconds, "sec", 1000.0},
    UnitAlias{Unit::Milliseconds, "us", 0.001},
    UnitAlias{Unit::Seconds, "s", 1.0},
    UnitAlias{Unit::Seconds, "sec", 1.0},
    UnitAlias{Unit::Seconds, "ms", 0.001},
    UnitAlias{Unit::Seconds, "us", 0.000001},
    UnitAlias{Unit::Decibels, "db", 1.0},
    UnitAlias{Unit::Semitones, "st", 1.0},
    UnitAlias{Unit::Semitones, "semi", 1.0},
    UnitAlias{Unit::Semitones, "semitones", 1.0},
    UnitAlias{Unit::Semitones, "ct", 0.01},
    UnitAlias{Unit::Cents, "ct", 1.0},
    UnitAlias{Unit::Cents, "cents", 1.0},
    UnitAlias{Unit::Cents, "st", 100.0},
    UnitAlias{Unit::Percent, "%", 1.0},
    UnitAlias{Unit::Degrees, "deg", 1.0},
    UnitAlias{Unit::Degrees, "\xc2\xb0", 1.0},
    UnitAlias{Unit::Factor, "x", 1.0},
    UnitAlias{Unit::Ratio, ":1", 1.0},
    UnitAlias{Unit::Bits, "bit", 1.0},
    UnitAlias{Unit::Bits, "bits", 1.0},
};

bool IsDigit(char c) { return c >= '0' && c <= '9'; }

std::string Fixed(double number, int decimals) {
    std::array<char, 400> text;  // the largest number has 309 digits
    const auto end = std::to_chars(text.data(), text.data() + text.size(), number,
                                   std::chars_format::fixed, decimals);
    return {text.data(), end.ptr};
}

/// The number rounded to decimals places, never a negative zero.
double Rounded(double number, int decimals) {
    const double scale = std::pow(10.0, decimals);
    const double rounded = std::round(number * scale) / scale;
    return rounded == 0.0 ? 0.0 : rounded;
}

/// Three digits above 1, and three places below.
int DecimalsOf(double number) {
    const double size = std::abs(number);
    return size < 1.0 ? 3 : size < 10.0 ? 2 : size < 100.0 ? 1 : 0;
}

struct Shortened {
    double number;
    int decimals;
};

/// Rounding may carry into one more digit, which then has one place less behind the point.
Shortened Shorten(double number) {
    const double rounded = Rounded(number, DecimalsOf(number));
    return {rounded, DecimalsOf(rounded)};
}

std::string Short(double number) {
    const Shortened text = Shorten(number);
    return text.number == 0.0 ? "0" : Fixed(text.number, text.decimals);
}

/// Moves on to the larger unit where the rounded number reaches a thousand.
std::string WithThousands(double number, const char* unit, const char* larger) {
    if (std::abs(Shorten(number).number) < 1000.0)
        return Short(number) + " " + unit;
    return Short(number * 0.001) + " " + larger;
}

std::string FixedText(double number, int decimals, const char* unit) {
    return Fixed(Rounded(number, decimals), decimals) + " " + unit;
}

/// Length of the number that text begins with, 0 where it begins with none.
size_t NumberLength(std::string_view text) {
    size_t at = 0;
    const auto digits = [&] {
        const size_t from = at;
        while (at < text.size() && IsDigit(text[at]))
            ++at;
        return at - from;
    };
    if (at < text.size() && (text[at] == '+' || text[at] == '-'))
        ++at;
    size_t count = digits();
    if (at < text.size() && text[at] == '.') {
        ++at;
        count += digits();
    }
    if (count == 0)
        return 0;
    const size_t mantissa = at;
    if (at < text.size() && (text[at] == 'e' || text[at] == 'E')) {
        ++at;
        if (at < text.size() && (text[at] == '+' || text[at] == '-'))
            ++at;
        if (digits() == 0)
            at = mantissa;
    }
    return at;
}

std::optional<double> FactorOf(std::string_view sign, Unit unit) {
    if (sign.empty())
        return 1.0;
    for (const UnitAlias& alias : kAliases) {
        if (alias.unit == unit && alias.sign == sign)
            return alias.factor;
    }
    return std::nullopt;
}

}  // namespace

std::string_view Trim(std::string_view text) {
    const auto isBlank = [](char c) { return c == ' ' || c == '\t' || c == '\r' || c == '\n'; };
    while (!text.empty() && isBlank(text.front()))
        text.remove_prefix(1);
    while (!text.empty() && isBlank(text.back()))
        text.remove_suffix(1);
    return text;
}

std::string Lower(std::string_view text) {
    std::string lower(text);
    std::transform(lower.begin(), lower.end(), lower.begin(), [](char c) {
        return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
    });
    return lower;
}

std::string FormatNumber(double number, Unit unit) {
    if (unit == Unit::Decibels && std::isinf(number) && number < 0.0)
        return "-inf dB";
    switch (unit) {
        case Unit::None:
            return Short(number);
        case Unit::Hertz:
            return WithThousands(number, "Hz", "kHz");
        case Unit::Milliseconds:
            return WithThousands(number, "ms", "s");
        case Unit::Seconds:
            return WithThousands(number * 1000.0, "ms", "s");
        case Unit::Semitones:
            return FixedText(number, 2, "st");
        case Unit::Decibels:
        case Unit::Cents:
        case Unit::Percent:
        case Unit::Degrees:
            return FixedText(number, 1, SignOf(unit));
        case Unit::Ratio:
            return Short(number) + ":1";
        case Unit::Factor:
        case Unit::Bits:
            return Short(number) + " " + SignOf(unit);
    }
    return {};
}

std::optional<double> ParseNumber(std::string_view text, Unit unit) {
    const std::string lower = Lower(Trim(text));
    std::string_view rest = lower;
    double number = 0.0;
    if (rest.substr(0, 4) == "-inf") {
        number = -std::numeric_limits<double>::infinity();
        rest.remove_prefix(4);
    } else {
        const size_t length = NumberLength(rest);
        if (length == 0)
            return std::nullopt;
        const std::optional<double> read = ReadNumber(rest.substr(0, length));
        if (!read)
            return std::nullopt;
        number = *read;
        rest.remove_prefix(length);
    }
    const std::optional<double> factor = FactorOf(Trim(rest), unit);
    if (!factor)
        return std::nullopt;
    return number * *factor;
}

}  // namespace Quorvan::Host

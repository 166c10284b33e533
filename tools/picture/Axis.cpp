#include "tools/picture/Axis.h"

#include <algorithm>
#include <cmath>
#include <cstdio>

namespace Quorvan::Tools {

namespace {

/// The round step that gives at most count ticks over a range.
double StepFor(double range, size_t count) {
    const double raw = range / static_cast<double>(std::max<size_t>(count, 1));
    const double decade = std::pow(10.0, std::floor(std::log10(raw)));
    for (const double factor : {1.0, 2.0, 5.0}) {
        if (factor * decade >= raw * 0.999)
            return factor * decade;
    }
    return 10.0 * decade;
}

std::string Decimals(double value, double step) {
    const int places = std::max(0, static_cast<int>(std::ceil(-std::log10(step) - 1.0e-9)));
    char text[32];
    std::snprintf(text, sizeof text, "%.*f", places, value);
    // A true minus sign is as wide as the digits; a negative zero is none.
    std::string label = text;
    if (label.front() == '-')
        label = label.find_first_of("123456789") == std::string::npos
                    ? label.substr(1)
                    : "\xe2\x88\x92" + label.substr(1);
    return label;
}

std::string HertzLabel(double hertz) {
    const double shown = hertz >= 1000.0 ? hertz / 1000.0 : hertz;
    return Decimals(shown, 1.0) + (hertz >= 1000.0 ? "k" : "");
}

}  // namespace

double Axis::Place(double value) const {
    if (scale == Scale::Logarithmic)
        return std::log(value / low) / std::log(high / low);
    return (value - low) / (high - low);
}

std::vector<Tick> Axis::Ticks(size_t count) const {
    return scale == Scale::Logarithmic ? LogarithmicTicks() : LinearTicks(count);
}

std::vector<Tick> Axis::LinearTicks(size_t count) const {
    std::vector<Tick> ticks;
    const double step = StepFor(high - low, count);
    const double tolerance = 1.0e-6 * step;
    const auto first = static_cast<long>(std::ceil((low - tolerance) / step));
    for (long n = first; static_cast<double>(n) * step <= high + tolerance; ++n) {
        const double value = static_cast<double>(n) * step;
        ticks.push_back({value, Decimals(value, step)});
    }
    return ticks;
}

std::vector<Tick> Axis::LogarithmicTicks() const {
    std::vector<Tick> ticks;
    const int first = static_cast<int>(std::floor(std::log10(low)));
    const int last = static_cast<int>(std::floor(std::log10(high)));
    for (int exponent = first; exponent <= last; ++exponent) {
        const double decade = std::pow(10.0, exponent);
        for (int factor = 1; factor <= 9; ++factor) {
            const double value = factor * decade;
            if (value < low || value > high * 1.000001)
                continue;
            const bool isLabelled = factor == 1 || factor == 2 || factor == 5;
            ticks.push_back({value, isLabelled ? HertzLabel(value) : ""});
        }
    }
    return ticks;
}

}  // namespace Quorvan::Tools

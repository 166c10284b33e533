#pragma once

#include <string>
#include <vector>

namespace Quorvan::Tools {

/// One mark of an axis.
struct Tick {
    double value = 0.0;
    std::string label;  ///< empty for marks between the labelled ones
};

/// An axis from a value to another, linear or logarithmic, and the round numbers on it.
class Axis {
public:
    enum class Scale { Linear, Logarithmic };

    Axis(double from, double to, Scale form = Scale::Linear) : low(from), high(to), scale(form) {}

    /// Place of a value: 0 at the start of the axis, 1 at its end, and beyond them outside.
    double Place(double value) const;
    /// Multiples of 1, 2 or 5 times a power of ten, at most about count of them. A logarithmic axis
    /// has all marks 1 to 9 of a decade, with labels at 1, 2 and 5, and "k" for thousands.
    std::vector<Tick> Ticks(size_t count) const;

    double Low() const { return low; }
    double High() const { return high; }

private:
    std::vector<Tick> LinearTicks(size_t count) const;
    std::vector<Tick> LogarithmicTicks() const;

    double low, high;
    Scale scale;
};

}  // namespace Quorvan::Tools

#pragma once

#include <bit>
#include <cstdint>

namespace Quorvan::dsp {

/// What from becomes as step is added to it again and again, each sum rounded. Between two powers
/// of two all sums are multiples of one last place, and step is rounded to such a one: mostly the
/// same each time, since only halves go up here and down there, and these show in the first two
/// sums. Then all sums are known at once.
class RepeatedSum {
public:
    RepeatedSum(double from, double step, uint32_t count)
        : start(from), plainStep(step), increment(from + step - from) {
        const double first = from + step;
        const double last = from + static_cast<double>(count) * increment;
        isKnown = first + step - first == increment && Range(from) == Range(last);
        end = isKnown ? last : from;
        for (uint32_t i = 0; !isKnown && i < count; ++i)
            end += step;
    }

    /// Behind all additions.
    double End() const { return end; }
    /// Writes the sums behind 0, 1 and so on up to count - 1 additions.
    void Fill(double* sums, uint32_t count) const {
        if (isKnown) {
            for (uint32_t i = 0; i < count; ++i)
                sums[i] = start + static_cast<double>(static_cast<int32_t>(i)) * increment;
            return;
        }
        double sum = start;
        for (uint32_t i = 0; i < count; ++i, sum += plainStep)
            sums[i] = sum;
    }

private:
    /// Sign and power of two.
    static uint64_t Range(double x) { return std::bit_cast<uint64_t>(x) >> 52; }

    double start;
    double plainStep;
    double increment;  ///< step as it comes out of the first sum
    double end = 0.0;
    bool isKnown = false;
};

}  // namespace Quorvan::dsp

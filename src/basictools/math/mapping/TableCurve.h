#pragma once

#include <algorithm>
#include <array>
#include <cstddef>

namespace Quorvan::MappingTools {

/// Straight lines between the entries of a rising table that runs from 0 to 1. Position 0..1 and
/// value 0..1; both directions hold their argument to that range.
template <size_t kSize>
struct TableCurve {
    std::array<float, kSize> table;
    float spacing;  ///< 1 / (kSize - 1): position between two entries

    constexpr float Map(float position) const {
        // In this form a position that is not a number gives 0 too, and no wild index.
        if (!(position > 0.0f))
            return 0.0f;
        if (position >= 1.0f)
            return 1.0f;
        const float scaled = position * static_cast<float>(kSize - 1);
        const size_t index = std::min(static_cast<size_t>(scaled), kSize - 2);
        const float fraction = scaled - static_cast<float>(index);
        return (1.0f - fraction) * table[index] + fraction * table[index + 1];
    }

    constexpr float Unmap(float value) const {
        if (!(value > 0.0f))
            return 0.0f;
        if (value >= 1.0f)
            return 1.0f;
        const auto upper = std::lower_bound(table.begin() + 1, table.end(), value);
        const float low = *(upper - 1);
        const float fraction = (value - low) / (*upper - low);
        return (static_cast<float>(upper - 1 - table.begin()) + fraction) * spacing;
    }
};

}  // namespace Quorvan::MappingTools

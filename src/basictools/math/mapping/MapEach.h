#pragma once

#include <cstdint>

namespace Quorvan::MappingTools {

/// Maps a block with the curve's own Map, which is called directly and not through the interface.
template <typename Curve>
void MapEach(const Curve& curve, float* values, uint32_t count) {
    for (uint32_t i = 0; i < count; ++i)
        values[i] = curve.Curve::Map(values[i]);
}

}  // namespace Quorvan::MappingTools

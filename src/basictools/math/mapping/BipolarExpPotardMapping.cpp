#include "basictools/math/mapping/BipolarExpPotardMapping.h"

#include <cmath>

#include "basictools/math/mapping/BlockMath.h"

namespace Quorvan::MappingTools {

float BipolarExpPotardMapping::Map(float position) const {
    return position > 0.5f ? (Rise(2.0f * position - 1.0f) + 1.0f) * 0.5f
                           : (1.0f - Rise(1.0f - 2.0f * position)) * 0.5f;
}

float BipolarExpPotardMapping::Unmap(float value) const {
    return value > 0.5f ? (RiseInverse(2.0f * value - 1.0f) + 1.0f) * 0.5f
                        : (1.0f - RiseInverse(1.0f - 2.0f * value)) * 0.5f;
}

void BipolarExpPotardMapping::MapBlock(float* values, uint32_t count) const {
    const float k = curve, c = scale;
    for (uint32_t i = 0; i < count; ++i) {
        // Both halves share one exponential of the distance from the centre.
        const float offset = 2.0f * values[i] - 1.0f;
        const float rise = (BlockExp(std::fabs(offset) * k) - 1.0f) * c;
        values[i] = (1.0f + std::copysign(rise, offset)) * 0.5f;
    }
}

}  // namespace Quorvan::MappingTools

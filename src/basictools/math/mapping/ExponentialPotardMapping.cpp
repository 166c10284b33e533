#include "basictools/math/mapping/ExponentialPotardMapping.h"

#include <cmath>

#include "basictools/math/mapping/BlockMath.h"

namespace Quorvan::MappingTools {

ExponentialPotardMapping::ExponentialPotardMapping(float bend)
    : curve(bend), scale(1.0f / (std::exp(bend) - 1.0f)) {}

float ExponentialPotardMapping::Rise(float position) const {
    return (std::exp(position * curve) - 1.0f) * scale;
}

float ExponentialPotardMapping::RiseInverse(float value) const {
    return std::log(value / scale + 1.0f) / curve;
}

float ExponentialPotardMapping::Map(float position) const { return Rise(position); }

float ExponentialPotardMapping::Unmap(float value) const { return RiseInverse(value); }

void ExponentialPotardMapping::MapBlock(float* values, uint32_t count) const {
    const float k = curve, c = scale;
    for (uint32_t i = 0; i < count; ++i)
        values[i] = (BlockExp(values[i] * k) - 1.0f) * c;
}

}  // namespace Quorvan::MappingTools

#include "basictools/math/mapping/InvPolynomialPotardMapping.h"

#include <cmath>

#include "basictools/math/mapping/BlockMath.h"

namespace Quorvan::MappingTools {

float InvPolynomialPotardMapping::Map(float position) const {
    return 1.0f - std::pow(1.0f - position, exponent);
}

float InvPolynomialPotardMapping::Unmap(float value) const {
    return 1.0f - std::pow(1.0f - value, 1.0f / exponent);
}

void InvPolynomialPotardMapping::MapBlock(float* values, uint32_t count) const {
    const BlockPower power(exponent);
    for (uint32_t i = 0; i < count; ++i)
        values[i] = 1.0f - power(1.0f - values[i]);
}

}  // namespace Quorvan::MappingTools

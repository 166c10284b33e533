#include "basictools/math/mapping/PolynomialPotardMapping.h"

#include <cmath>

#include "basictools/math/mapping/BlockMath.h"

namespace Quorvan::MappingTools {

float PolynomialPotardMapping::Map(float position) const { return std::pow(position, exponent); }

float PolynomialPotardMapping::Unmap(float value) const { return std::pow(value, 1.0f / exponent); }

void PolynomialPotardMapping::MapBlock(float* values, uint32_t count) const {
    const BlockPower power(exponent);
    for (uint32_t i = 0; i < count; ++i)
        values[i] = power(values[i]);
}

}  // namespace Quorvan::MappingTools

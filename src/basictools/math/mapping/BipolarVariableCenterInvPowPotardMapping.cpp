#include "basictools/math/mapping/BipolarVariableCenterInvPowPotardMapping.h"

#include <cmath>

#include "basictools/math/mapping/BlockMath.h"

namespace Quorvan::MappingTools {

float BipolarVariableCenterInvPowPotardMapping::Bend(float x, float power) const {
    if (x > center) {
        const float above = 1.0f - center;
        return (1.0f - std::pow(1.0f - (x - center) / above, power)) * above + center;
    }
    return std::pow(x / center, power) * center;
}

void BipolarVariableCenterInvPowPotardMapping::MapBlock(float* values, uint32_t count) const {
    const BlockPower power(exponent);
    const float below = center, above = 1.0f - center;
    for (uint32_t i = 0; i < count; ++i) {
        // Divisions, not products with a reciprocal: an end that misses 0 by one rounding would
        // show, as small exponents are steep there.
        const float x = values[i];
        const bool isAbove = x > below;
        const float fromAbove = 1.0f - (x - below) / above;
        const float fromBelow = x / below;
        const float bent = power(isAbove ? fromAbove : fromBelow);
        const float upper = (1.0f - bent) * above + below;
        const float lower = bent * below;
        values[i] = isAbove ? upper : lower;
    }
}

}  // namespace Quorvan::MappingTools

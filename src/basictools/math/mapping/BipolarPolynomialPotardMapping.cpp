#include "basictools/math/mapping/BipolarPolynomialPotardMapping.h"

#include <cmath>

namespace Quorvan::MappingTools {

float BipolarPolynomialPotardMapping::Map(float position) const {
    const float offset = 2.0f * position - 1.0f;
    const float power = std::pow(offset, exponent);
    // An even power has lost the sign, and would fold the lower half up.
    const bool isOdd = static_cast<int32_t>(exponent) % 2 != 0;
    const float sign = isOdd || offset >= 0.0f ? 1.0f : -1.0f;
    return power * 0.5f * sign + 0.5f;
}

float BipolarPolynomialPotardMapping::Unmap(float value) const {
    const float root = 1.0f / exponent;
    return value > 0.5f ? (std::pow(2.0f * value - 1.0f, root) + 1.0f) * 0.5f
                        : 0.5f - std::pow(1.0f - 2.0f * value, root) * 0.5f;
}

}  // namespace Quorvan::MappingTools

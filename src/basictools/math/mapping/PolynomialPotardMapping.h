#pragma once

#include "basictools/math/mapping/IPotardMapping.h"

namespace Quorvan::MappingTools {

/// A power of the position.
///
/// exponent   above 0; above 1 the low end is spread out
class PolynomialPotardMapping final : public IPotardMapping {
public:
    explicit PolynomialPotardMapping(float power) : exponent(power) {}

    float Map(float position) const override;
    float Unmap(float value) const override;
    void MapBlock(float* values, uint32_t count) const override;

private:
    float exponent;
};

}  // namespace Quorvan::MappingTools

#pragma once

#include "basictools/math/mapping/IPotardMapping.h"

namespace Quorvan::MappingTools {

/// A power of the way that is left to the top: y = 1 - (1 - x)^exponent.
///
/// exponent   above 0; above 1 the high end is spread out
class InvPolynomialPotardMapping : public IPotardMapping {
public:
    explicit InvPolynomialPotardMapping(float power) : exponent(power) {}

    float Map(float position) const override;
    float Unmap(float value) const override;
    void MapBlock(float* values, uint32_t count) const override;

protected:
    float exponent;
};

}  // namespace Quorvan::MappingTools

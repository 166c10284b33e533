#pragma once

#include "basictools/math/mapping/IPotardMapping.h"
#include "basictools/math/mapping/MapEach.h"

namespace Quorvan::MappingTools {

/// A power of the distance from the centre, odd about (0.5, 0.5).
///
/// exponent   a whole number above 0, odd or even; above 1 the centre is spread out
class BipolarPolynomialPotardMapping final : public IPotardMapping {
public:
    explicit BipolarPolynomialPotardMapping(float power) : exponent(power) {}

    float Map(float position) const override;
    float Unmap(float value) const override;
    void MapBlock(float* values, uint32_t count) const override { MapEach(*this, values, count); }

private:
    float exponent;
};

}  // namespace Quorvan::MappingTools

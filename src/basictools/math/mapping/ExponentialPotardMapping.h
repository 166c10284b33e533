#pragma once

#include "basictools/math/mapping/IPotardMapping.h"

namespace Quorvan::MappingTools {

/// An exponential from 0 to 1: y = (exp(x * curve) - 1) * scale.
///
/// curve   bend, not 0: above 0 the low end is spread out, below 0 the high end
/// scale   brings position 1 to the value 1; follows from curve unless given
class ExponentialPotardMapping : public IPotardMapping {
public:
    explicit ExponentialPotardMapping(float bend);
    ExponentialPotardMapping(float bend, float outputScale) : curve(bend), scale(outputScale) {}

    float Map(float position) const override;
    float Unmap(float value) const override;
    void MapBlock(float* values, uint32_t count) const override;

protected:
    float Rise(float position) const;
    float RiseInverse(float value) const;

    float curve;
    float scale;
};

}  // namespace Quorvan::MappingTools

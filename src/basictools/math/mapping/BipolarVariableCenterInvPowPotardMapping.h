#pragma once

#include "basictools/math/mapping/InvPolynomialPotardMapping.h"

namespace Quorvan::MappingTools {

/// A power up to a centre on the diagonal, and an inverse power from there on.
///
/// exponent   above 0; above 1 the two ends are spread out
/// center     position and value where the halves meet, between 0 and 1, both ends excluded
class BipolarVariableCenterInvPowPotardMapping final : public InvPolynomialPotardMapping {
public:
    BipolarVariableCenterInvPowPotardMapping(float power, float meetingPoint)
        : InvPolynomialPotardMapping(power), center(meetingPoint) {}

    float Map(float position) const override { return Bend(position, exponent); }
    float Unmap(float value) const override { return Bend(value, 1.0f / exponent); }
    void MapBlock(float* values, uint32_t count) const override;

private:
    float Bend(float x, float power) const;

    float center;
};

}  // namespace Quorvan::MappingTools

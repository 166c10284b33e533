#pragma once

#include "basictools/math/mapping/IPotardMapping.h"
#include "basictools/math/mapping/MapEach.h"

namespace Quorvan::MappingTools {

/// Two straight lines: three quarters of the travel reach the knee, the last quarter the top.
///
/// knee   value at position 0.75, between 0 and 1, both ends excluded
class PiecewiseLinearPotardMapping final : public IPotardMapping {
public:
    explicit PiecewiseLinearPotardMapping(float kneeValue) : knee(kneeValue) {}

    float Map(float position) const override;
    float Unmap(float value) const override;
    void MapBlock(float* values, uint32_t count) const override { MapEach(*this, values, count); }

private:
    float knee;
};

}  // namespace Quorvan::MappingTools

#pragma once

#include "basictools/math/mapping/IPotardMapping.h"
#include "basictools/math/mapping/MapEach.h"

namespace Quorvan::MappingTools {

/// A straight line from 1 down to 0, its own inverse.
class ReversePotardMapping final : public IPotardMapping {
public:
    float Map(float position) const override { return 1.0f - position; }
    float Unmap(float value) const override { return 1.0f - value; }
    void MapBlock(float* values, uint32_t count) const override { MapEach(*this, values, count); }
};

}  // namespace Quorvan::MappingTools

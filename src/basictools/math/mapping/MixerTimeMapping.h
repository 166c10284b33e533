#pragma once

#include "basictools/math/mapping/IPotardMapping.h"
#include "basictools/math/mapping/MapEach.h"

namespace Quorvan::MappingTools {

/// Times of a mixer's fades: a fixed curve of 10 points that spreads out the short times.
class MixerTimeMapping final : public IPotardMapping {
public:
    float Map(float position) const override;
    float Unmap(float value) const override;
    void MapBlock(float* values, uint32_t count) const override { MapEach(*this, values, count); }
};

}  // namespace Quorvan::MappingTools

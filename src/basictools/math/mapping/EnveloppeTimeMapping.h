#pragma once

#include "basictools/math/mapping/IPotardMapping.h"
#include "basictools/math/mapping/MapEach.h"

namespace Quorvan::MappingTools {

/// Times of an envelope's stages: a fixed curve of 21 points that spreads out the short times.
class EnveloppeTimeMapping final : public IPotardMapping {
public:
    float Map(float position) const override;
    float Unmap(float value) const override;
    void MapBlock(float* values, uint32_t count) const override { MapEach(*this, values, count); }
};

}  // namespace Quorvan::MappingTools

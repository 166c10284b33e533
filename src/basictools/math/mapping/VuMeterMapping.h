#pragma once

#include "basictools/math/mapping/IPotardMapping.h"
#include "basictools/math/mapping/MapEach.h"

namespace Quorvan::MappingTools {

/// The scale of a level meter, straight in decibels between marks that lie closer together towards
/// the bottom. Made to be read through Unmap, whose argument counts 60 dB downwards from 0 to 1;
/// Map knows its top position only.
class VuMeterMapping final : public IPotardMapping {
public:
    float Map(float position) const override { return position == 1.0f ? 1.0f : 0.0f; }
    float Unmap(float value) const override;
    void MapBlock(float* values, uint32_t count) const override { MapEach(*this, values, count); }
};

}  // namespace Quorvan::MappingTools

#pragma once

#include "basictools/math/mapping/IPotardMapping.h"

namespace Quorvan::MappingTools {

/// The value is the position.
class LinearPotardMapping final : public IPotardMapping {
public:
    float Map(float position) const override { return position; }
    float Unmap(float value) const override { return value; }
    void MapBlock(float*, uint32_t) const override {}
};

}  // namespace Quorvan::MappingTools

#pragma once

#include "basictools/math/mapping/ExponentialPotardMapping.h"

namespace Quorvan::MappingTools {

/// Two exponentials that meet in the centre (0.5, 0.5), the lower the mirror image of the upper.
///
/// curve   bend of each half, not 0: above 0 the centre is spread out, below 0 the two ends
class BipolarExpPotardMapping final : public ExponentialPotardMapping {
public:
    using ExponentialPotardMapping::ExponentialPotardMapping;

    float Map(float position) const override;
    float Unmap(float value) const override;
    void MapBlock(float* values, uint32_t count) const override;
};

}  // namespace Quorvan::MappingTools

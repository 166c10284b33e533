#include "basictools/math/mapping/PiecewiseLinearPotardMapping.h"

#include <algorithm>

namespace Quorvan::MappingTools {

float PiecewiseLinearPotardMapping::Map(float position) const {
    return position >= 0.75f ? (position - 0.75f) * 4.0f * (1.0f - knee) + knee
                             : position * 1.3333334f * knee;
}

float PiecewiseLinearPotardMapping::Unmap(float value) const {
    const float position =
        value >= knee ? (value - knee) / (1.0f - knee) * 0.25f + 0.75f : value / knee * 0.75f;
    return std::clamp(position, 0.0f, 1.0f);
}

}  // namespace Quorvan::MappingTools

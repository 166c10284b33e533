#include "basictools/math/mapping/InversePotardMapping.h"

#include "basictools/Raise.h"
#include "basictools/math/mapping/CException.h"

namespace Quorvan::MappingTools {

InversePotardMapping::InversePotardMapping(float rangeMin, float rangeMax)
    : min(rangeMin), inverseMax(1.0f / rangeMax), max(rangeMax), inverseMin(1.0f / rangeMin) {
    constexpr const char* kFile = "InversePotardMapping";
    const bool isOneSided = (min > 0.0f && max > 0.0f) || (min < 0.0f && max < 0.0f);
    if (!isOneSided)
        Raise(CException("Inverse Mapping range should not cross 0 value", kFile, __LINE__));
    if (!(max > min))
        Raise(CException("Max value must be bigger than min value", kFile, __LINE__));
}

float InversePotardMapping::Map(float position) const {
    const float reciprocal = (inverseMin - inverseMax) * position + inverseMax;
    return (1.0f / reciprocal - min) / (max - min);
}

float InversePotardMapping::Unmap(float value) const {
    const float inRange = (max - min) * value + min;
    return (1.0f / inRange - inverseMax) / (inverseMin - inverseMax);
}

}  // namespace Quorvan::MappingTools

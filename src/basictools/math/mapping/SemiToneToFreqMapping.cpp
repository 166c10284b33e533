#include "basictools/math/mapping/SemiToneToFreqMapping.h"

#include <cmath>

namespace Quorvan::MappingTools {

SemiToneToFreqMapping::SemiToneToFreqMapping(float lowestFrequency, float steps)
    : baseFrequency(lowestFrequency),
      span(steps - 1.0f),
      oneTwelfth(0.083333336f),
      inverseBase(1.0f / lowestFrequency),
      inverseSpan(1.0f / span) {}

float SemiToneToFreqMapping::Map(float position) const {
    return baseFrequency * std::exp2(position * span * oneTwelfth);
}

float SemiToneToFreqMapping::Unmap(float value) const {
    return 12.0f * std::log2(value * inverseBase) * inverseSpan;
}

}  // namespace Quorvan::MappingTools

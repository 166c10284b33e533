#include "basictools/math/mapping/HarmonicMapping.h"

namespace Quorvan::MappingTools {

namespace {

// Both branches are worked out and one is taken, so that a loop over it needs no jump. The upper
// one is exactly 1 in the centre.
inline float RatioAt(float position, float harmonic) {
    const float lower = 1.0f / (2.0f * position * (1.0f - harmonic) + harmonic);
    const float upper = (2.0f * position - 1.0f) * (harmonic - 1.0f) + 1.0f;
    return position < 0.5f ? lower : upper;
}

}  // namespace

float HarmonicMapping::Map(float position) const { return RatioAt(position, harmonic); }

float HarmonicMapping::Unmap(float value) const {
    if (value < 1.0f)
        return 0.5f / (1.0f - harmonic) * (1.0f / value - harmonic);
    if (value > 1.0f)
        return 0.5f / (harmonic - 1.0f) * (value - 1.0f) + 0.5f;
    return 0.5f;
}

void HarmonicMapping::MapBlock(float* values, uint32_t count) const {
    const float h = harmonic;
    for (uint32_t i = 0; i < count; ++i)
        values[i] = RatioAt(values[i], h);
}

}  // namespace Quorvan::MappingTools

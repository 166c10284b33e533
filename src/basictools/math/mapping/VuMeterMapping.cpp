#include "basictools/math/mapping/VuMeterMapping.h"

#include <cmath>

namespace Quorvan::MappingTools {

namespace {

struct Segment {
    float above;  ///< amplitude from which on the segment holds, itself excluded
    float slope;  ///< meter travel for each factor of ten
    float offset;
};

// The bounds lie 10 dB apart from -20 dB on. Neighbours meet at their bound, and the last segment
// runs out at 1.
constexpr Segment kSegments[] = {
    {0.1f, 0.5f, 1.0f},    {0.031622775f, 0.4f, 0.9f},
    {0.01f, 0.3f, 0.75f},  {0.0031622776f, 0.15f, 0.45f},
    {0.001f, 0.05f, 0.2f}, {0.00031622776f, 0.1f, 0.35f},
};

}  // namespace

float VuMeterMapping::Unmap(float value) const {
    const float amplitude = std::pow(10.0f, -3.0f * value);
    for (const Segment& segment : kSegments) {
        if (amplitude > segment.above)
            return 1.0f - (segment.slope * std::log10(amplitude) + segment.offset);
    }
    return 1.0f;
}

}  // namespace Quorvan::MappingTools

#pragma once

#include "basictools/math/mapping/IPotardMapping.h"
#include "basictools/math/mapping/MapEach.h"

namespace Quorvan::MappingTools {

/// A frequency, even in semitones. Absolute: the output is in hertz.
///
/// baseFrequency   frequency at position 0, in hertz, above 0
/// steps           semitones in the travel, both ends counted, above 1
class SemiToneToFreqMapping final : public IPotardMapping {
public:
    SemiToneToFreqMapping(float lowestFrequency, float steps);

    float Map(float position) const override;
    float Unmap(float value) const override;
    void MapBlock(float* values, uint32_t count) const override { MapEach(*this, values, count); }
    bool IsAbsolute() const override { return true; }

private:
    float baseFrequency;
    float span;  ///< steps - 1
    float oneTwelfth;
    float inverseBase;  ///< 1 / baseFrequency
    float inverseSpan;  ///< 1 / span
};

}  // namespace Quorvan::MappingTools

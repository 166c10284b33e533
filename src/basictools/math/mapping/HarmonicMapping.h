#pragma once

#include "basictools/math/mapping/IPotardMapping.h"

namespace Quorvan::MappingTools {

/// A frequency ratio: falls linearly in its reciprocal to 1 / harmonic below the centre, is exactly
/// 1 in it, and rises linearly to harmonic above. Absolute: the output is the ratio itself.
///
/// harmonic   largest ratio, above 1
class HarmonicMapping final : public IPotardMapping {
public:
    explicit HarmonicMapping(float largestRatio) : harmonic(largestRatio) {}

    float Map(float position) const override;
    float Unmap(float value) const override;
    void MapBlock(float* values, uint32_t count) const override;
    bool IsAbsolute() const override { return true; }

private:
    float harmonic;
};

}  // namespace Quorvan::MappingTools

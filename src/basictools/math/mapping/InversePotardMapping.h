#pragma once

#include "basictools/math/mapping/IPotardMapping.h"
#include "basictools/math/mapping/MapEach.h"

namespace Quorvan::MappingTools {

/// Linear in the reciprocal, and falling: position 0 gives 1 and position 1 gives 0.
///
/// min, max   ends of the range whose reciprocals are walked; both above 0 or both below, and max
///            above min, or the constructor throws CException
class InversePotardMapping final : public IPotardMapping {
public:
    InversePotardMapping(float rangeMin, float rangeMax);

    float Map(float position) const override;
    float Unmap(float value) const override;
    void MapBlock(float* values, uint32_t count) const override { MapEach(*this, values, count); }

private:
    float min;
    float inverseMax;  ///< 1 / max
    float max;
    float inverseMin;  ///< 1 / min
};

}  // namespace Quorvan::MappingTools

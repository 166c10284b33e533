#pragma once

#include <cstdint>

#include "basictools/math/mapping/PotardMappingVariant.h"

namespace Quorvan::MappingTools {

/// The lookup from a mapping kind (PotardKind) to a curve.
class PotardMappingUtils {
public:
    /// Builds the curve of a kind, 0 to 16; what x and y mean depends on the kind, and many curves
    /// read neither. Throws CException for any other kind, and whatever the curve's constructor
    /// throws.
    static PotardMappingVariant Create(uint32_t kind, float x, float y);
};

}  // namespace Quorvan::MappingTools

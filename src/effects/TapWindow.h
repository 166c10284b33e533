#pragma once

#include <cstdint>

namespace Quorvan::dsp {

/// Shapes of the fades at both ends of a tap's way.
enum class TapWindow : int32_t { kRaisedCosine = 0, kQuarterSine = 1, kLinear = 2 };

/// Gains of a tap at count positions 0..1 on its way: 1 except within overlap of an end, where it
/// fades. overlap 0..0.5, one value a sample.
void FillTapGains(TapWindow window, const float* positions, const float* overlap, float* gains,
                  uint32_t count);

}  // namespace Quorvan::dsp

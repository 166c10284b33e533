#pragma once

#include <cstdint>

namespace Quorvan::dsp {

/// Level compensation of the distortion: for count drives in dB, the gains in dB that keep the
/// level of a driven signal near that of the input. Fits, one for each of the DistortionCurves,
/// over drives from 0 to 60 dB.
void FillLevelCompensation(int32_t type, const float* drivesDb, float* gainsDb, uint32_t count);

}  // namespace Quorvan::dsp

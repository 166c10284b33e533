#pragma once

#include <cstdint>

namespace Quorvan::dsp {

/// Eight-bit logarithmic quantiser: a sign, eight segments of sixteen levels, the step doubling
/// from segment to segment. Segments as in the mu-law of ITU-T G.711, in its 14-bit scale of 8031
/// levels.
namespace LogQuantizer {

/// The level at or below a sample, in 0..1 with the sample's sign. What is beyond 1 counts as 1.
float Quantize(float sample);
/// The same over count samples, in place.
void Process(float* samples, uint32_t count);

}  // namespace LogQuantizer

}  // namespace Quorvan::dsp

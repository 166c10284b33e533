#pragma once

#include <cstdint>

namespace Quorvan::dsp {

/// Whether a sample is infinite or no number.
bool HasNonFinite(const float* samples, uint32_t count);
/// Copies samples with 0 in place of what is infinite or no number; from and to may be the same.
void CopyFinite(const float* from, uint32_t count, float* to);

}  // namespace Quorvan::dsp

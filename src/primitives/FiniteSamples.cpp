#include "primitives/FiniteSamples.h"

#include <bit>
#include <cmath>

namespace Quorvan::dsp {

namespace {
constexpr uint32_t kExponentBits = 0x7f800000u;  // all set in what is infinite or no number
}

/// By the bits, without a branch in the loop, so that it runs in vectors.
bool HasNonFinite(const float* samples, uint32_t count) {
    uint32_t found = 0;
    for (uint32_t i = 0; i < count; ++i) {
        const auto bits = std::bit_cast<uint32_t>(samples[i]);
        found |= static_cast<uint32_t>((bits & kExponentBits) == kExponentBits);
    }
    return found != 0;
}

void CopyFinite(const float* from, uint32_t count, float* to) {
    for (uint32_t i = 0; i < count; ++i)
        to[i] = std::isfinite(from[i]) ? from[i] : 0.0f;
}

}  // namespace Quorvan::dsp

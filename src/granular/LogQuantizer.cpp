#include "granular/LogQuantizer.h"

#include <algorithm>
#include <array>
#include <cmath>

namespace Quorvan::dsp::LogQuantizer {

namespace {

constexpr float kScale = 8031.0f;
constexpr float kInverseScale = 0.0001245175f;
constexpr float kTopLevel = 15.0f;

constexpr std::array<float, 8> kSegmentBase = {0.0f,   33.0f,   99.0f,   231.0f,
                                               495.0f, 1023.0f, 2079.0f, 4191.0f};
constexpr std::array<float, 8> kSegmentStep = {2.0f,  4.0f,  8.0f,   16.0f,
                                               32.0f, 64.0f, 128.0f, 256.0f};

/// Selections in place of branches and table look-ups, so that the block loop runs in vectors. The
/// division is by a power of two and the difference below is exact: the level is the very one that
/// counting steps would find.
inline float QuantizeOne(float sample) {
    const float x = std::max(-1.0f, std::min(sample, 1.0f));
    const float a = std::abs(x) * kScale;
    float base = kSegmentBase[0];
    float step = kSegmentStep[0];
    float perStep = 1.0f / kSegmentStep[0];
    for (size_t s = 1; s < kSegmentBase.size(); ++s) {
        const bool reached = a >= kSegmentBase[s];
        base = reached ? kSegmentBase[s] : base;
        step = reached ? kSegmentStep[s] : step;
        perStep = reached ? 1.0f / kSegmentStep[s] : perStep;
    }
    const float level =
        std::min(static_cast<float>(static_cast<int32_t>((a - base) * perStep)), kTopLevel);
    const float value = (level * step + base) * kInverseScale;
    return x < 0.0f ? -value : value;
}

}  // namespace

float Quantize(float sample) { return QuantizeOne(sample); }

void Process(float* samples, uint32_t count) {
    for (uint32_t i = 0; i < count; ++i)
        samples[i] = QuantizeOne(samples[i]);
}

}  // namespace Quorvan::dsp::LogQuantizer

#include "effects/HeadGap.h"

#include <cmath>

namespace Quorvan::dsp {

namespace {

constexpr float kLineSeconds = 0.162f;
constexpr int32_t kSpareSamples = 100;
// Weight of the sum over the delay in seconds, times the rate, and of the middle beside it.
constexpr float kMixAtNone = 288.96002f, kMixSlope = 1257.6f;
constexpr float kMiddle = 1.00052f;

float ReadAt(DelayLine& line, float delay) {
    const auto whole = static_cast<int32_t>(delay);
    return line.Read(whole, delay - static_cast<float>(whole), DelayLine::kPolynomial);
}

}  // namespace

void HeadGap::Setup(float rate) {
    inverseSampleRate = 1.0f / rate;
    line.Resize(static_cast<int32_t>(std::ceil(kLineSeconds * rate)) + kSpareSamples,
                DelayLine::Clearing::BitByBit);
}

void HeadGap::Clear() {
    line.Clear();
    sum = 0.0f;
}

void HeadGap::Process(float* samples, const float* seconds, const float* gaps, uint32_t count) {
    line.Wipe();
    for (uint32_t i = 0; i < count; ++i) {
        const float mix = (kMixAtNone - seconds[i] * kMixSlope) * inverseSampleRate;
        const float h = samples[i];
        sum += h - ReadAt(line, 2.0f * gaps[i]);
        samples[i] = ReadAt(line, gaps[i]) * (kMiddle - mix) + mix * sum;
        line.Write(h);
    }
}

void HeadGap::Watch(const float* samples, uint32_t count) {
    line.Wipe();
    for (uint32_t i = 0; i < count; ++i)
        line.Write(samples[i]);
}

}  // namespace Quorvan::dsp

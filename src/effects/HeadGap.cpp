#include "effects/HeadGap.h"

#include <algorithm>
#include <array>
#include <cmath>

#include "primitives/PolynomialReads.h"

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
    if (ProcessAtOnce(samples, seconds, gaps, count))
        return;
    for (uint32_t i = 0; i < count; ++i) {
        const float mix = (kMixAtNone - seconds[i] * kMixSlope) * inverseSampleRate;
        const float h = samples[i];
        sum += h - ReadAt(line, 2.0f * gaps[i]);
        samples[i] = ReadAt(line, gaps[i]) * (kMiddle - mix) + mix * sum;
        line.Write(h);
    }
}

/// Process where nothing that is read is still to be written; false, and nothing is done,
/// elsewhere.
bool HeadGap::ProcessAtOnce(float* samples, const float* seconds, const float* gaps,
                            uint32_t count) {
    constexpr auto kNearest = static_cast<float>(kMost + 2);
    if (count > kMost || std::any_of(gaps, gaps + count, [](float gap) { return gap < kNearest; }))
        return false;
    std::array<float, kMost> fraction, middle, far;
    const auto readAt = [&](float factor, float* out) {
        std::array<int32_t, kMost> back;
        for (uint32_t i = 0; i < count; ++i) {
            const float delay = factor * gaps[i];
            const auto whole = static_cast<int32_t>(delay);
            back[i] = whole - static_cast<int32_t>(i);
            fraction[i] = delay - static_cast<float>(whole);
        }
        PolynomialReads::Read(line, back.data(), fraction.data(), count, out);
    };
    readAt(1.0f, middle.data());
    readAt(2.0f, far.data());
    Take(samples, count);
    for (uint32_t i = 0; i < count; ++i) {
        const float mix = (kMixAtNone - seconds[i] * kMixSlope) * inverseSampleRate;
        sum += samples[i] - far[i];
        samples[i] = middle[i] * (kMiddle - mix) + mix * sum;
    }
    return true;
}

void HeadGap::Watch(const float* samples, uint32_t count) {
    line.Wipe();
    Take(samples, count);
}

void HeadGap::Take(const float* samples, uint32_t count) {
    for (uint32_t i = 0; i < count; ++i)
        line.Write(samples[i]);
}

}  // namespace Quorvan::dsp

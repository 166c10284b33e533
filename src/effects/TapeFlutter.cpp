#include "effects/TapeFlutter.h"

#include <algorithm>
#include <cmath>
#include <limits>

#include "primitives/RefinedSine.h"
#include "primitives/Xorshift.h"

namespace Quorvan::dsp {

namespace {

constexpr float kTwoPi = 6.2831855f;
constexpr float kTurnsPerRadian = 0.15915494f;
constexpr float kRadiansPerDraw = 1.4629181e-09f;  // 2 pi over all 32-bit numbers
constexpr float kSlowShare = 0.14285715f;

// Wobbles in units of depth. The levels of the overtones fall along straight lines over the
// octaves.
constexpr float kFastFundamental = 50.0f, kFastLevelDb = 19.0f, kFastFallDb = 53.0f;
constexpr float kSlowFundamental = 8.3725f, kSlowLevelDb = 17.0f, kSlowFallDb = 19.0f;

/// Depth over the delay, a straight line for each range.
struct DepthLine {
    float upToMs, slope, offset;
};
constexpr DepthLine kDepthLines[] = {
    {134.0f, 0.000616f, -0.020960001f},
    {174.0f, 0.0014640001f, -0.1344f},
    {200.0f, 0.00092f, -0.040640004f},
    {std::numeric_limits<float>::infinity(), 0.00022f, 0.1f},
};
constexpr float kFrequencyKneeMs = 174.0f;

float Overtone(float levelDb, float fallDb, size_t i) {
    // Volatile, so that the level is worked out by the running system's library in every build: a
    // compiler that does it ahead may round otherwise.
    const volatile float partial = static_cast<float>(i + 1);
    return std::pow(10.0f, (levelDb - fallDb * std::log10(partial)) * 0.05f);
}

}  // namespace

TapeFlutter::Setting::Setting(float delayMs) {
    const float wanted = delayMs <= kFrequencyKneeMs
                             ? std::max(11.22f - delayMs * 0.05973f, 0.0001f)
                             : std::max(1.0108747f - delayMs * 0.001010775f, 0.001f);
    frequency = std::min(wanted, 100.0f);
    const DepthLine* line = kDepthLines;
    while (delayMs > line->upToMs)
        ++line;
    depthSlope = line->slope;
    depthOffset = line->offset;
}

void TapeFlutter::Reset(uint32_t& randomState) {
    fast.Draw(randomState);
    slow.Draw(randomState);
    fast.amplitude[0] = kFastFundamental;
    for (size_t i = 1; i < fast.amplitude.size(); ++i)
        fast.amplitude[i] = Overtone(kFastLevelDb, kFastFallDb, i);
    slow.amplitude[0] = kSlowFundamental;
    for (size_t i = 1; i < slow.amplitude.size(); i += 2)
        slow.amplitude[i] = Overtone(kSlowLevelDb, kSlowFallDb, i);
}

float TapeFlutter::Advance(float frequency, uint32_t count) {
    return fast.Advance(frequency, inverseSampleRate, count) +
           slow.Advance(frequency * kSlowShare, inverseSampleRate, count);
}

template <size_t kSize>
void TapeFlutter::Bank<kSize>::Draw(uint32_t& randomState) {
    for (float& p : phase)
        p = static_cast<float>(prims::XorshiftStep(randomState)) * kRadiansPerDraw;
}

template <size_t kSize>
float TapeFlutter::Bank<kSize>::Advance(float frequency, float inverseRate, uint32_t count) {
    float sum = 0.0f;
    for (size_t i = 0; i < kSize; ++i) {
        const float turns =
            static_cast<float>(i + 1) * frequency * inverseRate * static_cast<float>(count) +
            phase[i] * kTurnsPerRadian;
        phase[i] = (turns - static_cast<float>(static_cast<int32_t>(turns))) * kTwoPi;
        sum += RefinedSin(HalfTurnAround(phase[i])) * amplitude[i];
    }
    return sum;
}

}  // namespace Quorvan::dsp

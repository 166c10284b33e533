#include "effects/HeadLoss.h"
#include "primitives/UnpairedSine.h"

#include <algorithm>
#include <cmath>

namespace Quorvan::dsp {

void HeadLoss::Setup(float rate) {
    inverseSampleRate = 1.0f / rate;
    lastMs.fill(0.0f);
}

void HeadLoss::Clear() {
    for (StereoBiquadState& stage : stages.head)
        stage.Clear();
    stages.gap.Clear();
}

void HeadLoss::Process(const std::array<float*, 2>& samples,
                       const std::array<const float*, 2>& delays, uint32_t count) {
    const bool leftStays = Stays(0, delays[0], count);
    const bool rightStays = Stays(1, delays[1], count);
    if (leftStays && rightStays) {
        const StereoBiquadCoefficients head(last[0].head, last[1].head);
        const StereoBiquadCoefficients gap(last[0].gap, last[1].gap);
        Cascade local = stages;
        MapStereoSamples(samples[0], samples[1], samples[0], samples[1], count,
                         [&](FloatLanes x) { return local.Tick(head, gap, x); });
        stages = local;
        return;
    }
    FillBoth(delays, count);
    Cascade local = stages;
    uint32_t i = 0;
    MapStereoSamples(samples[0], samples[1], samples[0], samples[1], count, [&](FloatLanes x) {
        const Filters &left = courses[0][i], &right = courses[1][i];
        ++i;
        return local.Tick({left.head, right.head}, {left.gap, right.gap}, x);
    });
    stages = local;
}

FloatLanes HeadLoss::Cascade::Tick(const StereoBiquadCoefficients& headPass,
                                   const StereoBiquadCoefficients& gapPass, FloatLanes x) {
    for (StereoBiquadState& stage : head)
        x = stage.Tick(headPass, x);
    return gap.Tick(gapPass, x);
}

bool HeadLoss::Stays(uint32_t channel, const float* delays, uint32_t count) {
    const float ms = lastMs[channel];
    return std::all_of(delays, delays + count,
                       [this, ms](float delay) { return Milliseconds(delay) == ms; });
}

float HeadLoss::Milliseconds(float samples) const {
    return std::clamp(samples * 1000.0f * inverseSampleRate, HeadLossTable::kShortestMs,
                      HeadLossTable::kLongestMs);
}

HeadLoss::Filters HeadLoss::FiltersAt(float ms) const {
    const HeadLossTable::Entry entry = table.At(ms);
    const auto lowPass = [this](float frequency, float q) {
        const float w = BiquadCoefficients::StableCorner(frequency, inverseSampleRate);
        return BiquadCoefficients::LowPass(w, UnpairedSine(w) * 0.5f / q);
    };
    return {lowPass(entry.headFrequency, entry.headQ), lowPass(entry.gapFrequency, entry.gapQ)};
}

/// Where both channels have one delay, they have one course.
void HeadLoss::FillBoth(const std::array<const float*, 2>& delays, uint32_t count) {
    const bool alike =
        lastMs[0] == lastMs[1] && std::equal(delays[0], delays[0] + count, delays[1]);
    Fill(0, delays[0], count);
    if (!alike) {
        Fill(1, delays[1], count);
        return;
    }
    std::copy_n(courses[0].begin(), count, courses[1].begin());
    last[1] = last[0];
    lastMs[1] = lastMs[0];
}

void HeadLoss::Fill(uint32_t channel, const float* delays, uint32_t count) {
    for (uint32_t i = 0; i < count; ++i) {
        const float ms = Milliseconds(delays[i]);
        if (ms != lastMs[channel]) {
            last[channel] = FiltersAt(ms);
            lastMs[channel] = ms;
        }
        courses[channel][i] = last[channel];
    }
}

}  // namespace Quorvan::dsp

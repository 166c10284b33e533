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
    for (StereoBiquadState& stage : headStages)
        stage.Clear();
    gapStage.Clear();
}

void HeadLoss::Process(const std::array<float*, 2>& samples,
                       const std::array<const float*, 2>& delays, uint32_t count) {
    const bool leftStays = Stays(0, delays[0], count);
    const bool rightStays = Stays(1, delays[1], count);
    if (leftStays && rightStays) {
        const std::array<Filters, 2> f = last;
        for (StereoBiquadState& stage : headStages)
            stage.Process([&f](uint32_t c, uint32_t) { return f[c].head; }, samples, count);
        gapStage.Process([&f](uint32_t c, uint32_t) { return f[c].gap; }, samples, count);
        return;
    }
    Fill(0, delays[0], count);
    Fill(1, delays[1], count);
    for (StereoBiquadState& stage : headStages)
        stage.Process([this](uint32_t c, uint32_t i) { return courses[c][i].head; }, samples,
                      count);
    gapStage.Process([this](uint32_t c, uint32_t i) { return courses[c][i].gap; }, samples, count);
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

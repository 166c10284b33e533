#include "primitives/UpDownsampler.h"

#include <algorithm>

#include "primitives/BiquadPipeline.h"

namespace Quorvan::prims {

namespace {

struct Section {
    float b1, a1, a2;
};

// Low-pass below a quarter of the high rate.
constexpr float kHalfBandGain = 0.0030733873f;
constexpr std::array<Section, 8> kHalfBand{{
    {1.973124f, 0.34268466f, 0.034826297f},
    {1.7759712f, 0.30661562f, 0.071505979f},
    {1.4588346f, 0.24039252f, 0.14177981f},
    {1.1168094f, 0.15409894f, 0.24082419f},
    {0.81546491f, 0.05949486f, 0.36413756f},
    {0.58459824f, -0.032006964f, 0.50960201f},
    {0.43196863f, -0.11019264f, 0.67930949f},
    {0.35665116f, -0.16560659f, 0.88158149f},
}};

}  // namespace

UpDownsampler::UpDownsampler(uint32_t rateFactor, uint32_t filter)
    : factor(rateFactor),
      scratch(rateFactor),
      sectionCount(static_cast<uint32_t>(kHalfBand.size())),
      downGain(kHalfBandGain),
      upGain(static_cast<float>(rateFactor) * kHalfBandGain),
      upState(sectionCount),
      downState(sectionCount),
      filterType(filter) {
    for (const Section& section : kHalfBand) {
        numeratorB1.push_back(filterType == 1 ? section.b1 : 2.0f);
        denominator.emplace_back(section.a1, section.a2);
    }
}

float UpDownsampler::RunCascade(float s, std::vector<std::pair<float, float>>& state) const {
    for (uint32_t k = 0; k < sectionCount; ++k) {
        auto& [z1, z2] = state[k];
        const float out = s + z1;
        z1 = numeratorB1[k] * s - denominator[k].first * out + z2;
        z2 = s - denominator[k].second * out;
        s = out;
    }
    return s;
}

bool UpDownsampler::FitsPipeline() const {
    return factor == 2 && sectionCount == BiquadPipeline<1>::kSections;
}

bool UpDownsampler::AreAlike(const Two& resamplers) {
    return resamplers[0]->FitsPipeline() && resamplers[1]->FitsPipeline() &&
           resamplers[0]->filterType == resamplers[1]->filterType;
}

template <size_t kChannels>
void UpDownsampler::PipelineUp(const std::array<UpDownsampler*, kChannels>& resamplers,
                               const std::array<const float*, kChannels>& in,
                               const std::array<float*, kChannels>& out, uint32_t count) {
    const UpDownsampler& shape = *resamplers[0];
    BiquadPipeline<kChannels> cascade(shape.numeratorB1, shape.denominator);
    for (size_t c = 0; c < kChannels; ++c)
        cascade.Load(c, resamplers[c]->upState);
    const float gain = shape.upGain;
    const auto sample = [&](size_t c, uint32_t i) { return in[c][i / 2] * gain; };
    const auto inserted = [](size_t, uint32_t) { return 0.0f; };
    const auto take = [&](size_t c, uint32_t i, float y) { out[c][i] = y; };
    cascade.Run(2 * count, sample, inserted, take, take);
    for (size_t c = 0; c < kChannels; ++c)
        cascade.Store(c, resamplers[c]->upState);
}

template <size_t kChannels>
void UpDownsampler::PipelineDown(const std::array<UpDownsampler*, kChannels>& resamplers,
                                 const std::array<const float*, kChannels>& in,
                                 const std::array<float*, kChannels>& out, uint32_t count) {
    const UpDownsampler& shape = *resamplers[0];
    BiquadPipeline<kChannels> cascade(shape.numeratorB1, shape.denominator);
    for (size_t c = 0; c < kChannels; ++c)
        cascade.Load(c, resamplers[c]->downState);
    const float gain = shape.downGain;
    const auto sample = [&](size_t c, uint32_t i) { return in[c][i] * gain; };
    const auto take = [&](size_t c, uint32_t i, float y) { out[c][i / 2] = y; };
    const auto drop = [](size_t, uint32_t, float) {};
    cascade.Run(2 * count, sample, sample, take, drop);
    for (size_t c = 0; c < kChannels; ++c)
        cascade.Store(c, resamplers[c]->downState);
}

void UpDownsampler::Upsample(const float* in, float* out, uint32_t count) {
    if (FitsPipeline()) {
        PipelineUp<1>({this}, {in}, {out}, count);
        return;
    }
    for (uint32_t k = 0; k < count; ++k) {
        out[k * factor] = RunCascade(in[k] * upGain, upState);
        for (uint32_t j = 1; j < factor; ++j)
            out[k * factor + j] = RunCascade(0.0f, upState);
    }
}

void UpDownsampler::Downsample(const float* in, float* out, uint32_t count) {
    if (FitsPipeline()) {
        PipelineDown<1>({this}, {in}, {out}, count);
        return;
    }
    for (uint32_t k = 0; k < count; ++k) {
        for (uint32_t j = 0; j < factor; ++j)
            scratch[j] = RunCascade(in[k * factor + j] * downGain, downState);
        out[k] = scratch[0];
    }
}

void UpDownsampler::UpsampleTwo(const Two& resamplers, const std::array<const float*, 2>& in,
                                const std::array<float*, 2>& out, uint32_t count) {
    if (AreAlike(resamplers)) {
        PipelineUp<2>(resamplers, in, out, count);
        return;
    }
    for (size_t c = 0; c < 2; ++c)
        resamplers[c]->Upsample(in[c], out[c], count);
}

void UpDownsampler::DownsampleTwo(const Two& resamplers, const std::array<const float*, 2>& in,
                                  const std::array<float*, 2>& out, uint32_t count) {
    if (AreAlike(resamplers)) {
        PipelineDown<2>(resamplers, in, out, count);
        return;
    }
    for (size_t c = 0; c < 2; ++c)
        resamplers[c]->Downsample(in[c], out[c], count);
}

void UpDownsampler::Reset() {
    std::fill(upState.begin(), upState.end(), std::pair{0.0f, 0.0f});
    std::fill(downState.begin(), downState.end(), std::pair{0.0f, 0.0f});
}

}  // namespace Quorvan::prims

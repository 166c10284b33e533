#include "effects/DigitalPPM.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <utility>

#include "framework/ParameterTable.h"
#include "primitives/StereoLanes.h"

namespace Quorvan::dsp {

namespace {

constexpr float kFallTime = 0.7383006f;  // time constant in seconds: 1.7 / ln 10

const ParameterTable& Table() {
    static const ParameterTable table = {ParameterSpec::Raw("Level")};
    return table;
}

}  // namespace

DigitalPPM::DigitalPPM(std::string moduleName) : UnitModule(std::move(moduleName), 1, 0, Table()) {}

void DigitalPPM::OnSetup(float sampleRate, uint32_t) {
    inputGain = 1.0f / (sampleRate * kFallTime);
    negativeDecay = -std::exp(-inputGain);
}

void DigitalPPM::OnReset(bool) { level = 0.0f; }

bool DigitalPPM::UpdateParameters(ProcessBlock&) { return true; }

bool DigitalPPM::OnProcess(ProcessBlock& block) {
    if (block.numFrames == 0)
        return SetParameterNormalized(Level, 0.0f);
    const float* input = block.inputs[0];
    for (uint32_t i = 0; i < block.numFrames; ++i)
        level = Next(level, input[i]);
    return Show();
}

bool DigitalPPM::Show() { return SetParameterNormalized(Level, std::clamp(level, 0.0f, 1.0f)); }

void DigitalPPM::ProcessPair(DigitalPPM& first, DigitalPPM& second, const ProcessBlock& block,
                             const float* const* inputs) {
    if (block.numFrames == 0) {
        first.SetParameterNormalized(Level, 0.0f);
        second.SetParameterNormalized(Level, 0.0f);
    } else {
        using Bits = int32_t __attribute__((vector_size(16)));
        const Bits magnitude = Bits{} + 0x7fffffff;
        const FloatLanes gain = BothSides(first.inputGain, second.inputGain);
        const FloatLanes decay = BothSides(first.negativeDecay, second.negativeDecay);
        FloatLanes levels = BothSides(first.level, second.level);
        const auto step = [&](FloatLanes x) {
            const auto a = std::bit_cast<FloatLanes>(std::bit_cast<Bits>(x) & magnitude);
            return levels = a > levels ? a : a * gain - levels * decay;
        };
        ForEachStereoSample(
            inputs[0], inputs[1], block.numFrames, step, [](uint32_t, FloatLanes, FloatLanes) {},
            [](uint32_t, float, float) {});
        first.level = levels[0];
        second.level = levels[1];
        first.Show();
        second.Show();
    }
    for (DigitalPPM* meter : {&first, &second}) {
        meter->needsFullUpdate = false;
        meter->ClearChanged();
    }
}

}  // namespace Quorvan::dsp

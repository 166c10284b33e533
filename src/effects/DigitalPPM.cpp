#include "effects/DigitalPPM.h"

#include <algorithm>
#include <cmath>
#include <utility>

#include "framework/ParameterTable.h"

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
    float now = level;
    for (uint32_t i = 0; i < block.numFrames; ++i) {
        const float a = std::abs(input[i]);
        now = a > now ? a : a * inputGain - now * negativeDecay;
    }
    level = now;
    return SetParameterNormalized(Level, std::clamp(level, 0.0f, 1.0f));
}

}  // namespace Quorvan::dsp

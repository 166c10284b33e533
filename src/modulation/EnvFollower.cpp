#include "modulation/EnvFollower.h"

#include <algorithm>
#include <cmath>
#include <utility>

#include "framework/ParameterTable.h"

namespace Quorvan::dsp {

namespace {

constexpr float kTimeConstants = 5.0f;  // that Attack and Release stand for
constexpr float kSilence = 0.000001f;   // an envelope below rests at 0
/// Rounding leaves a rest in the running sum; what is below this is taken for one.
constexpr double kSumRest = 1e-10;
/// Entries beyond the longest window, against its rounding.
constexpr int32_t kSpareEntries = 5;

const ParameterTable& Table() {
    using P = ParameterSpec;
    static const ParameterTable table = {
        P::Linear("Attack", 0.001f, 5.0f).AtValue(0.005f),
        P::Linear("Release", 0.001f, 5.0f).AtValue(0.01f),
        P::Linear("RMSWindowDurationMs", 0.0f, 100.0f).AtValue(10.0f),
        P::Linear("FixedLinearGain", 0.0f, 100.0f).AtValue(1.4142135f),
        P::Raw("StereoInput"),
    };
    return table;
}

}  // namespace

void EnvFollower::DelayLineDouble::Resize(int32_t length) {
    storage.assign(static_cast<size_t>(length), 0.0);
    data = storage.data();
    size = length;
    writeIndex = 0;
}

void EnvFollower::DelayLineDouble::Clear() {
    std::fill(storage.begin(), storage.end(), 0.0);
    writeIndex = 0;
}

EnvFollower::EnvFollower(std::string moduleName)
    : UnitModule(std::move(moduleName), 2, 1, Table()) {}

void EnvFollower::OnSetup(float rate, uint32_t) {
    sampleRate = rate;
    const float longestMs = parameters[RMSWindowDurationMs].maxValue;
    window.Resize(kSpareEntries + static_cast<int32_t>(rate * longestMs * 0.001f));
}

void EnvFollower::OnReset(bool) {
    envelope = 0.0f;
    sumOfSquares = 0.0;
    window.Clear();
}

bool EnvFollower::UpdateParameters(ProcessBlock&) {
    if (IsChanged(Attack))
        attackCoefficient = OnePoleStep(Value(Attack));
    if (IsChanged(Release))
        releaseCoefficient = OnePoleStep(Value(Release));
    if (IsChanged(StereoInput))
        stereoInput = Position(StereoInput) > 0.5f;
    if (IsChanged(RMSWindowDurationMs))
        UpdateWindow();
    if (IsChanged(FixedLinearGain))
        gain = Value(FixedLinearGain);
    return true;
}

bool EnvFollower::OnProcess(ProcessBlock& block) {
    float* const out = block.outputs[0];
    Rectify(block, out);
    if (useRms)
        MeasureRms(out, block.numFrames);
    Follow(out, block.numFrames);
    return true;
}

/// Step of the one-pole a sample; a time of 0 gives 1, so that it jumps.
float EnvFollower::OnePoleStep(float seconds) const {
    return 1.0f - std::exp(-kTimeConstants / (seconds * sampleRate));
}

void EnvFollower::UpdateWindow() {
    const float samples = Value(RMSWindowDurationMs) * sampleRate * 0.001f;
    windowLength = std::max(static_cast<int32_t>(samples), 1);
    useRms = windowLength > 1;
    inverseWindowLength = 1.0 / static_cast<double>(windowLength);
    OnReset(false);
    RequestFullUpdate();
}

void EnvFollower::Rectify(const ProcessBlock& block, float* out) const {
    const uint32_t count = block.numFrames;
    const float* const left = block.inputs[0];
    if (!stereoInput || block.numInputs < 2) {
        for (uint32_t i = 0; i < count; ++i)
            out[i] = std::abs(left[i]);
        return;
    }
    const float* const right = block.inputs[1];
    for (uint32_t i = 0; i < count; ++i)
        out[i] = (std::abs(right[i]) + std::abs(left[i])) * 0.5f;
}

/// Running mean of the squares over the window, in place.
void EnvFollower::MeasureRms(float* levels, uint32_t count) {
    double* const ring = window.data;
    const int32_t size = window.size;
    const double share = inverseWindowLength;
    int32_t write = window.writeIndex;
    int32_t oldest = write - windowLength;
    if (oldest < 0)
        oldest += size;
    double sum = sumOfSquares;
    for (uint32_t i = 0; i < count; ++i) {
        const auto x = static_cast<double>(levels[i]);
        const double entry = x * x * share;
        sum = sum - ring[oldest] + entry;
        if (sum < kSumRest)
            sum = 0.0;
        ring[write] = entry;
        levels[i] = std::sqrt(static_cast<float>(sum));
        write = write + 1 == size ? 0 : write + 1;
        oldest = oldest + 1 == size ? 0 : oldest + 1;
    }
    window.writeIndex = write;
    sumOfSquares = sum;
}

/// Gain and one-pole, in place.
void EnvFollower::Follow(float* levels, uint32_t count) {
    const float scale = gain;
    const float rise = attackCoefficient;
    const float fall = releaseCoefficient;
    float state = envelope;
    for (uint32_t i = 0; i < count; ++i) {
        const float level = levels[i] * scale;
        state += (level - state) * (level < state ? fall : rise);
        if (state < kSilence)
            state = 0.0f;
        levels[i] = state;
    }
    envelope = state;
}

}  // namespace Quorvan::dsp

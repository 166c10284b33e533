#include "granular/BitCrusher.h"

#include <algorithm>
#include <cmath>
#include <utility>

#include "framework/ParameterTable.h"
#include "primitives/Decibels.h"

namespace Quorvan::dsp {

namespace {

constexpr float kDcCorner = 31.415928f;            // pi * 10 Hz, the corner of the high-pass
constexpr float kInverse44100 = 0.000022675737f;   // Downsample counts at this rate
constexpr float kLargestDeadZone = 1.0f / 256.0f;  // of the coarser depths, up to 8 bits
constexpr float kDeadZoneBits = 8.0f;

const ParameterTable& Table() {
    using P = ParameterSpec;
    static const ParameterTable table = {
        P::Raw("Wet"),
        P::Curved("Bitdepth", PotardKind::kReverse, 1.5f, 16.0f, 1.0f),
        P::Curved("Downsample", PotardKind::kExponential, 1.0f, 80.0f, 3.0f),
        P::Linear("InGainCompensated", -40.0f, 40.0f).AtValue(0.0f),
        P::Raw("StereoBC").AtPosition(1.0f),
    };
    return table;
}

enum Row : uint32_t { kWetRow = 2, kBitdepthRow, kDownsampleRow };

}  // namespace

BitCrusher::BitCrusher(std::string moduleName) : UnitModule(std::move(moduleName), 5, 2, Table()) {}

void BitCrusher::OnSetup(float rate, uint32_t blockSize) {
    sampleRate = rate;
    dcGain = rate / (rate + kDcCorner);
    dcFeedback = (kDcCorner - rate) / (rate + kDcCorner);
    wet.assign(blockSize, 0.0f);
    wetSmoother.stepLength = 1;
    wetSmoother.sampleRate = rate;
    wetSmoother.UpdateCoefficients();
    wetSmoother.rampSteps = blockSize;
}

void BitCrusher::OnReset(bool) {
    updateRight = false;
    phase = 0.0f;
    state = {};
    wetSmoother.Reset(Value(Wet));
}

bool BitCrusher::UpdateParameters(ProcessBlock&) {
    if (IsChanged(StereoBC))
        channels = Index(StereoBC) + 1;
    if (IsChanged(Bitdepth)) {
        const float bits = Value(Bitdepth);
        SetBitDepth(bits);
        deadZone = bits > kDeadZoneBits ? std::exp2(-bits) : kLargestDeadZone;
    }
    if (IsChanged(Downsample))
        SetDownsample(Value(Downsample));
    if (IsChanged(InGainCompensated)) {
        inGain = DecibelsToGain(Value(InGainCompensated));
        outGain = 1.0f / inGain;
    }
    return true;
}

bool BitCrusher::OnProcess(ProcessBlock& block) {
    wetSmoother.SetTarget(parameters[Wet].GetBlockValue(block, kWetRow));
    wetSmoother.FillBlock(wet.data(), block.numFrames);
    SetDownsample(parameters[Downsample].GetBlockValue(block, kDownsampleRow));
    SetBitDepth(parameters[Bitdepth].GetBlockValue(block, kBitdepthRow));
    if (channels > 1)
        Run<2>(block);
    else
        Run<1>(block);
    return true;
}

void BitCrusher::SetBitDepth(float bits) {
    halfLevels = std::exp2(bits) * 0.5f;
    halfStep = std::exp2(-bits);
    step = 2.0f * halfStep;
}

void BitCrusher::SetDownsample(float divisor) {
    period = divisor > 1.0f ? std::max(sampleRate * kInverse44100 * divisor, 1.0f) : 1.0f;
    inversePeriod = 1.0f / period;
}

template <uint32_t kChannels>
void BitCrusher::Run(const ProcessBlock& block) {
    std::array<Channel, kMaxChannels> local = state;
    float clock = phase;
    bool rightIsDue = updateRight;
    for (uint32_t i = 0; i < block.numFrames; ++i) {
        for (uint32_t c = 0; c < kChannels; ++c) {
            const float input = block.inputs[c][i];
            Channel& channel = local[c];
            const float h = HighPass(channel, input);
            const bool takes = c == 0 ? TakesSample(clock) : rightIsDue;
            if (takes)
                channel.slope = (h - channel.held) * inversePeriod;
            rightIsDue = c == 0 && (takes || rightIsDue);
            const float q = QuantizeStep(Walk(channel));
            block.outputs[c][i] = q * wet[i] * outGain + (1.0f - wet[i]) * input;
        }
    }
    state = local;
    phase = clock;
    updateRight = rightIsDue;
}

bool BitCrusher::TakesSample(float& clock) const {
    clock += 1.0f;
    const bool takes = clock > period;
    while (clock > period)
        clock -= period;
    return takes;
}

float BitCrusher::HighPass(Channel& channel, float input) const {
    const float v = input * inGain * dcGain;
    const float h = v + channel.dcState;
    channel.dcState = -(h * dcFeedback + v);
    return h;
}

float BitCrusher::Walk(Channel& channel) const {
    channel.held = std::clamp(channel.slope + channel.held, -1.0f, 1.0f);
    return channel.held;
}

float BitCrusher::QuantizeStep(float y) const {
    if (!(std::abs(y) >= deadZone))
        return 0.0f;
    const float level = static_cast<float>(static_cast<int32_t>(halfLevels * y)) * step;
    return std::clamp(y <= 0.0f ? level - halfStep : level + halfStep, -1.0f, 1.0f);
}

}  // namespace Quorvan::dsp

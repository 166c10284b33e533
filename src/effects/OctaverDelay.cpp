#include "effects/OctaverDelay.h"

#include <algorithm>
#include <tuple>
#include <utility>

#include "effects/NoteValues.h"
#include "effects/StereoInputs.h"
#include "framework/ParameterTable.h"
#include "primitives/DryWetGains.h"

namespace Quorvan::dsp {

namespace {

const ParameterTable& Table() {
    using P = ParameterSpec;
    constexpr uint32_t exponential = PotardKind::kExponential;
    static const ParameterTable table = {
        P::Stepped("Mode", 3),
        P::Raw("Stereo").AtValue(1.0f),
        P::Raw("DryWet"),
        P::Linear("DelayTimeMs", 1.0f, 2000.0f),
        P::Stepped("DelayTimeSynced", kNoteValues.size()),
        P::Raw("Feedback"),
        P::Linear("PitchShift", -24.0f, 24.0f),
        P::Stepped("Window", 3),
        P::Curved("Spray", exponential, 0.0f, 500.0f, 3.0f),
        P::Curved("HPFreq", exponential, 20.0f, 10000.0f, 6.0f),
        P::Curved("LPFreq", exponential, 250.0f, 20000.0f, 6.0f),
        P::Raw("MidiSync"),
        P::Stepped("RateSyncedType", 3),
        P::Linear("DelayOffset", -20.0f, 20.0f),
        P::Linear("Detune", -100.0f, 100.0f),
    };
    return table;
}

enum Row : uint32_t {
    kDryWetRow = 2,
    kTimeRow,
    kFeedbackRow,
    kHighPassRow,
    kLowPassRow,
    kPitchRow,
    kSprayRow,
    kOffsetRow,
    kDetuneRow
};

}  // namespace

OctaverDelay::OctaverDelay(std::string moduleName)
    : ModuleContainer(std::move(moduleName), 11, 2, Table(), std::tuple("PitchShiftDelay1"),
                      std::tuple("PitchShiftDelay2")) {
    for (const auto& [own, inChild] :
         {std::pair<uint32_t, uint32_t>{Stereo, PitchShiftDelay::Stereo},
          {MidiSync, PitchShiftDelay::MidiSync},
          {RateSyncedType, PitchShiftDelay::RateSyncedType}}) {
        Link(own, kOffsets[0] + inChild);
        Link(own, kOffsets[1] + inChild);
    }
    Child<1>().SetParameterValue(PitchShiftDelay::Feedback, 0.0f);
    Child<1>().Configure(PitchShiftDelay::PitchShift, PotardKind::kLinear, -36.0f, 36.0f);
    Child<0>().SetParameterValue(PitchShiftDelay::Window, 1.0f);
    Child<1>().SetParameterValue(PitchShiftDelay::Window, 1.0f);
}

void OctaverDelay::OnSetup(float rate, uint32_t blockSize) {
    blockFrames = blockSize;
    for (SmootherInterpLPF* smoother : {&wetSmoother, &loopGainSmoother}) {
        smoother->stepLength = 1;
        smoother->sampleRate = static_cast<double>(rate);
        smoother->rampSteps = blockSize;
        smoother->UpdateCoefficients();
    }
    for (AlignedVector* buffer : {&wetGain, &dryGain, &loopGain})
        buffer->assign(blockSize, 0.0f);
    for (Buffers* stage : {&stage1In, &stage1Out, &stage2In, &stage2Out})
        for (AlignedVector& channel : *stage)
            channel.assign(blockSize, 0.0f);
}

void OctaverDelay::OnReset(bool) {
    for (Buffers* stage : {&stage1In, &stage1Out, &stage2In, &stage2Out})
        for (AlignedVector& channel : *stage)
            std::fill(channel.begin(), channel.end(), 0.0f);
}

bool OctaverDelay::UpdateParameters(ProcessBlock& block) {
    if (IsChanged(Mode)) {
        mode = Index(Mode);
        Reset(false);
    }
    if (IsChanged(Window))
        SetBoth(PitchShiftDelay::Window, static_cast<float>(Index(Window)));
    UpdateShifts(block);
    PassDown(block);
    UpdateGains(block);
    return true;
}

bool OctaverDelay::OnProcess(ProcessBlock& block) {
    const uint32_t count = block.numFrames;
    const auto inputs = StereoInputs(block);
    for (uint32_t c = 0; c < kChannels; ++c) {
        for (uint32_t i = 0; i < count; ++i)
            stage1In[c][i] = stage2Out[c][i] * loopGain[i] + inputs[c][i];
        // A stage in mono leaves its right output alone, which must not repeat an older block. Nor
        // may a longer block that comes next: behind what this one has, the loop is silent.
        std::fill_n(stage1Out[c].begin(), count, 0.0f);
        std::fill_n(stage2Out[c].begin(), count > 0 ? blockFrames : 0, 0.0f);
    }
    RunStage(Child<0>(), block, stage1In, stage1Out);
    if (mode != 0) {
        for (uint32_t c = 0; c < kChannels; ++c)
            for (uint32_t i = 0; i < count; ++i)
                stage2In[c][i] = stage1Out[c][i] * loopGain[i];
        RunStage(Child<1>(), block, stage2In, stage2Out);
    }
    for (uint32_t i = 0; i < count; ++i) {
        const float left = inputs[0][i], right = inputs[1][i];
        const float wet = wetGain[i], dry = dryGain[i];
        block.outputs[0][i] = (stage2Out[0][i] + stage1Out[0][i]) * wet + left * dry;
        block.outputs[1][i] = (stage2Out[1][i] + stage1Out[1][i]) * wet + right * dry;
    }
    return true;
}

void OctaverDelay::SetBoth(uint32_t idInChild, float value) {
    Child<0>().SetParameterValue(idInChild, value);
    Child<1>().SetParameterValue(idInChild, value);
}

/// The second stage's shift makes up what the first one's lacks to the octave.
void OctaverDelay::UpdateShifts(ProcessBlock& block) {
    const float detune = ParameterAt(Detune).GetBlockValue(block, kDetuneRow);
    Child<0>().SetParameterValue(PitchShiftDelay::Detune, detune);
    Child<1>().SetParameterValue(PitchShiftDelay::Detune, -detune);
    const float shift = ParameterAt(PitchShift).GetBlockValue(block, kPitchRow);
    const float second = mode == 0 ? shift : mode == 1 ? 12.0f - shift : -shift - 12.0f;
    Child<0>().SetParameterValue(PitchShiftDelay::PitchShift, shift);
    Child<1>().SetParameterValue(PitchShiftDelay::PitchShift, second);
}

/// What both stages have alike.
void OctaverDelay::PassDown(ProcessBlock& block) {
    struct Passed {
        uint32_t own, inChild, row;
    };
    using P = PitchShiftDelay;
    static constexpr Passed kPassed[] = {
        {Spray, P::Spray, kSprayRow},
        {DelayTimeSynced, P::DelayTimeSynced, kTimeRow},
        {DelayTimeMs, P::DelayTimeMs, kTimeRow},
        {DelayOffset, P::DelayOffset, kOffsetRow},
        {HPFreq, P::HPFreq, kHighPassRow},
        {LPFreq, P::LPFreq, kLowPassRow},
    };
    for (const Passed& passed : kPassed)
        SetBoth(passed.inChild, ParameterAt(passed.own).GetBlockValue(block, passed.row));
    const float delayModulated = IsRowActive(block, kTimeRow) ? 1.0f : 0.0f;
    const float offsetModulated = IsRowActive(block, kOffsetRow) ? 1.0f : 0.0f;
    ForEachChild([=](PitchShiftDelay& stage) {
        stage.SetParameterNormalized(P::ModDelayConnected, delayModulated);
        stage.SetParameterNormalized(P::ModOffsetConnected, offsetModulated);
    });
}

void OctaverDelay::UpdateGains(ProcessBlock& block) {
    const float feedback = ParameterAt(Feedback).GetBlockValue(block, kFeedbackRow);
    const float wet = 2.0f * ParameterAt(DryWet).GetBlockValue(block, kDryWetRow);
    loopGainSmoother.SetTarget(mode == 0 ? 0.0f : feedback);
    loopGainSmoother.FillBlock(loopGain.data(), blockFrames);
    Child<0>().SetParameterValue(PitchShiftDelay::Feedback, mode == 0 ? feedback : 0.0f);
    // The stages jump by themselves: all that makes this one due makes them due as well.
    if (needsFullUpdate) {
        wetSmoother.Reset(wet);
        loopGainSmoother.Reset(feedback);
    }
    wetSmoother.SetTarget(wet);
    wetSmoother.FillBlock(wetGain.data(), blockFrames);
    SplitDryWet(wetGain.data(), dryGain.data(), block.numFrames);
}

void OctaverDelay::RunStage(PitchShiftDelay& stage, const ProcessBlock& block, Buffers& in,
                            Buffers& out) {
    std::array<float*, kChannels> inputs{in[0].data(), in[1].data()};
    std::array<float*, kChannels> outputs{out[0].data(), out[1].data()};
    ProcessBlock inner = block;
    inner.inputs = inputs.data();
    inner.outputs = outputs.data();
    inner.numInputs = inner.numOutputs = kChannels;
    stage.Process(inner);
}

}  // namespace Quorvan::dsp

// The processor's modulation stage and its effect slots.
#include <algorithm>

#include "processor/MoteWeaverProcessor.h"

namespace Quorvan::Processor {

namespace {

enum Source : uint32_t { kFollowerSource, kFunctionSource, kSequencerSource = 4, kMacroSource };

/// Destination rows behind the two audio channels of "FX1", effect by effect; -1 is no modulation.
constexpr std::array<int8_t, 48> kSlotRows{
    -1, 36, 37,                          // filter
    38, -1,                              // distortion
    -1, 39, 40, 41,                      // compressor
    -1, 42, 43, -1, -1, 44, 45, -1,      // delay
    -1, 46, 47, -1, -1, 48, 49, 50, 51,  // octaver delay
    -1, 52, 53, 54, 55, 56, -1, -1,      // tape echo
    -1, 57, 58,                          // chorus
    -1, 59, 60,                          // flanger
    -1, -1, -1, 61, 62, 63, 64, -1       // reverb
};
/// Rows of "FX2" against those of "FX1".
constexpr uint32_t kSlotRowStep = 30;

}  // namespace

void MoteWeaverProcessor::RunModulation(dsp::ProcessBlock& block, const Inputs& in) {
    const uint32_t frames = block.numFrames;
    std::fill_n(Matrix().GetSourceRow(kMacroSource), frames, Position(kMacro1));
    std::fill_n(Matrix().GetSourceRow(kMacroSource + 1), frames, Position(kMacro2));
    RunFollower(block, in);
    RunFunctions(block);
    RunSequencer(block);
    RunChild(Matrix(), block, nullptr, 0, nullptr, 0);
}

void MoteWeaverProcessor::RunFollower(dsp::ProcessBlock& block, const Inputs& in) {
    const uint32_t frames = block.numFrames;
    Inputs heard = in;
    if (Value(kEnvelopeFollowerSource) == 1.0f && block.numAuxInputs != 0) {
        heard.stereo = block.numAuxInputs > 1;
        heard.left = block.auxInputs[0];
        heard.right = heard.stereo ? block.auxInputs[1] : block.auxInputs[0];
    }
    Follower().SetParameterNormalized(dsp::EnvFollower::StereoInput, heard.stereo ? 1.0f : 0.0f);
    float* followed[] = {heard.left, heard.right};
    if (!envelopeGain.IsAtRestAt(1.0)) {
        envelopeGain.FillBlock(ramp, frames);
        for (uint32_t c = 0; c < (heard.stereo ? 2u : 1u); ++c) {
            for (uint32_t i = 0; i < frames; ++i)
                stage[c][i] = ramp[i] * followed[c][i];
            followed[c] = stage[c];
        }
    }
    float* source[] = {Matrix().GetSourceRow(kFollowerSource)};
    RunChild(Follower(), block, followed, heard.stereo ? 2 : 1, source, 1);
    Matrix().SourceUpdated(kFollowerSource, frames);
    std::copy_n(heard.left, frames, block.auxOutputs[0]);
    std::copy_n(source[0], frames, block.auxOutputs[1]);
}

void MoteWeaverProcessor::RunFunctions(const dsp::ProcessBlock& block) {
    for (uint32_t k = 0; k < 3; ++k) {
        float* rows[] = {Row(27 + k), Row(30 + k)};
        float* source[] = {Matrix().GetSourceRow(kFunctionSource + k)};
        RunChild(Function(k), block, rows, 2, source, 1);
        Function(k).HoldSingleStep(source[0], block.numFrames);
        Matrix().SourceUpdated(kFunctionSource + k, block.numFrames);
    }
}

void MoteWeaverProcessor::RunSequencer(const dsp::ProcessBlock& block) {
    const uint32_t frames = block.numFrames;
    float* rate[] = {Row(33)};
    float* const source = Matrix().GetSourceRow(kSequencerSource);
    float* outputs[] = {source};
    RunChild(Sequencer(), block, rate, 1, outputs, 1);
    Sequencer().HoldSingleStep(source, frames);
    if (Position(kStepSeqBipolar) > 0.5f)
        for (uint32_t i = 0; i < frames; ++i)
            source[i] = 2.0f * source[i] - 1.0f;
    const float* const row = Row(34);
    dsp::Parameter& scale = ParameterAt(kStepSeqScale);
    const float position = scale.GetNormalized();
    for (uint32_t i = 0; i < frames; ++i)
        ramp[i] = std::clamp(row[i] + position, 0.0f, 1.0f);
    scale.MapPositions(ramp, frames);
    for (uint32_t i = 0; i < frames; ++i)
        source[i] *= ramp[i];
    Matrix().SourceUpdated(kSequencerSource, frames);
}

void MoteWeaverProcessor::ConnectSlots() {
    for (uint32_t slot = 0; slot < 2; ++slot)
        for (uint32_t k = 0; k < kSlotRows.size(); ++k) {
            const uint32_t row = static_cast<uint32_t>(kSlotRows[k]) + slot * kSlotRowStep;
            slotInputs[slot][k + 2] = kSlotRows[k] < 0 ? nullptr : Row(row);
        }
}

/// Answers where the slot's output is: an empty one leaves it where it was.
template <uint32_t kSlot>
float** MoteWeaverProcessor::RunSlot(dsp::ProcessBlock& block, float** inputs, float** outputs) {
    constexpr uint32_t kFirstChild = 5;
    constexpr uint32_t kShift = kSlot * kSlotRowStep;
    FxVariant& slot = Child<kFirstChild + kSlot>();
    const uint32_t mixId = kSlot == 0 ? kFX1DryWet : kFX2DryWet;
    slot.SetMix(LiveValue(mixId, 35 + kShift, block));
    if (slot.IsEmpty()) {
        slot.ProcessEmpty(block);
        return inputs;
    }
    auto& channels = slotInputs[kSlot];
    std::copy_n(inputs, 2, channels.begin());
    // A distortion of one channel leaves the other as it finds it, scaled: what the last block left
    // here would grow from block to block.
    std::fill_n(outputs[1], block.numFrames, 0.0f);
    RunChild(slot, block, channels.data(), kSlotChannels, outputs, 2);
    return outputs;
}

void MoteWeaverProcessor::RunLoopSlots(dsp::ProcessBlock& block) {
    const bool both = fx2Position == 2;
    float** signal = limited;
    if (fx1Position == 2)
        signal = RunSlot<0>(block, signal, both ? stage : feedbackSend);
    if (fx1Position == 2 && both)
        signal = RunSlot<1>(block, signal, feedbackSend);
    for (uint32_t c = 0; signal != feedbackSend && c < 2; ++c)
        std::copy_n(signal[c], block.numFrames, feedbackSend[c]);
}

/// Sends signal through the slots that sit at place, and answers where it is then.
float** MoteWeaverProcessor::RunSlotsAt(int32_t place, dsp::ProcessBlock& block, float** signal) {
    if (fx1Position == place)
        signal = RunSlot<0>(block, signal, slotOutA);
    if (fx2Position == place)
        signal = RunSlot<1>(block, signal, slotOutB);
    return signal;
}

}  // namespace Quorvan::Processor

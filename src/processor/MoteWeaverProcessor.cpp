#include "processor/MoteWeaverProcessor.h"

#include <algorithm>
#include <cmath>
#include <numbers>
#include <string>
#include <tuple>

#include "primitives/BlockDelay.h"
#include "primitives/FiniteSamples.h"
#include "primitives/PeakHold.h"
#include "primitives/RingStretch.h"
#include "primitives/StereoLanes.h"
#include "primitives/UnpairedSine.h"

namespace Quorvan::Processor {

namespace {

constexpr uint32_t kBufferCount = 11;
constexpr uint32_t kHeldBlocks = 8;            ///< of the wet signal, side by side
constexpr float kHighPassCorner = 62.831856f;  // pi * 20 Hz
constexpr float kFeedbackDelay = 0.005f;       // seconds
constexpr float kFeedbackRoom = 0.02f;
constexpr float kDryRoom = 0.01f;
constexpr float kLatency = 0.003f;

std::tuple<std::string> Named(const char* name) { return {name}; }

/// Pade approximation of tanh, held to -1..1.
float SoftClip(float x) {
    const float square = x * x;
    return std::clamp(x * (square + 27.0f) / (9.0f * square + 27.0f), -1.0f, 1.0f);
}

/// Whole samples, and a block at least: at the lowest rates a block is longer than the delays.
int32_t RingLength(float samples, uint32_t blockSize) {
    return std::max(static_cast<int32_t>(std::ceil(samples)), static_cast<int32_t>(blockSize));
}

dsp::Parameter AmountMapping() {
    return dsp::Parameter::MakeContinuous("", dsp::PotardKind::kLinear, -1.0f, 1.0f, 0.5f);
}

}  // namespace

MoteWeaverProcessor::MoteWeaverProcessor()
    : MoteWeaverProcessorBase("", ProcessorTable(), Named("MoteWeaver"), Named("EnvFollower"),
                              Named("Function1"), Named("Function2"), Named("Function3"),
                              Named("FX1"), Named("FX2"),
                              std::tuple(0x7fu, AmountMapping(), std::string("Modulations")),
                              Named("LFO_Stereo_X"), Named("LFO_Stereo_Y"), Named("Limiter"),
                              Named("StepSeq"), Named("MasterVuL"), Named("MasterVuR")) {
    Granular().SetParameterNormalized(dsp::MoteWeaverId::Crossfade, 1.0f);
    Granular().SetParameterNormalized(dsp::MoteWeaverId::BufferPersistence, 0.0f);
    Granular().SetParameterValue(dsp::MoteWeaverId::TriggerMode, 0.0f);
    TuneSources();
    TuneSpatializer();
    FillInitialChunk();
    AppendParameters(AssignedTable());
}

dsp::FunctionGenerator<64>& MoteWeaverProcessor::Function(uint32_t index) {
    return index == 0 ? Child<2>() : index == 1 ? Child<3>() : Child<4>();
}

void MoteWeaverProcessor::TuneSources() {
    using F = dsp::FunctionGenerator<64>;
    using S = dsp::StepSequencer;
    namespace Kind = dsp::PotardKind;
    Follower().SetParameterValue(dsp::EnvFollower::RMSWindowDurationMs, 0.0f);
    Follower().Configure(dsp::EnvFollower::Attack, Kind::kLinear, 0.0f, 1.0f);
    Follower().Configure(dsp::EnvFollower::Release, Kind::kLinear, 0.0f, 3.0f);
    Follower().SetParameterValue(dsp::EnvFollower::FixedLinearGain, 1.0f);

    for (uint32_t k = 0; k < 3; ++k) {
        F& function = Function(k);
        function.Configure(F::RateUnSynced, Kind::kPolynomial, 0.01f, 20.0f, 5.0f);
        for (const uint32_t id : {uint32_t{F::MidiSync}, uint32_t{F::GateIn}, uint32_t{F::Bipolar},
                                  uint32_t{F::GateOut}})
            function.ConfigureStepped(id, 2);
        function.ConfigureStepped(F::FeedbackNextPoint, 64);
    }

    Sequencer().Configure(S::RateUnSynced, Kind::kPolynomial, 0.01f, 40.0f, 5.0f);
    Sequencer().Configure(S::Swing, Kind::kLinear, 50.0f, 75.0f);
    Sequencer().ConfigureStepped(S::NbSteps, 16, 1.0f);
    Sequencer().ConfigureStepped(S::CurrentStep, 16);
    for (uint32_t i = 0; i < 32; ++i)
        Sequencer().Configure(S::StepVal1 + i, Kind::kLinear, 0.0f, 1.0f);
    Sequencer().SetParameterNormalized(S::SppHardFollow, 1.0f);
    Sequencer().NeedPhases(false);
}

void MoteWeaverProcessor::TuneSpatializer() {
    using L = dsp::LFO;
    namespace Id = dsp::MoteWeaverId;
    namespace Kind = dsp::PotardKind;
    LfoX().Configure(L::RateUnSynced, Kind::kPolynomial, 0.0f, 20.0f, 7.0f);
    LfoY().Configure(L::RateUnSynced, Kind::kLinear, 0.0f, 2000.0f);
    for (L* lfo : {&LfoX(), &LfoY()}) {
        lfo->SetParameterNormalized(L::ControlRate, 0.0f);
        lfo->NeedOnlyFirstSamples();
    }
    LfoX().SetParameterNormalized(L::Unipolar, 0.0f);
    LfoY().SetParameterNormalized(L::Unipolar, 1.0f);
    for (L* lfo : {&LfoX(), &LfoY()})
        lfo->SetSyncedRates(kSpatializerNotes.data(), kSpatializerNotes.size());
    Link(kSpatializerEnable, ModuleIndex::kMoteWeaver + Id::SpatializerEnabled);
    Granular().Configure(Id::RandomWalkRate, Kind::kLinear, 0.0f, 2000.0f);
    Granular().SetParameterValue(Id::CenterStereo, 0.0f);
    Granular().SetParameterValue(Id::Distance, 0.0f);
    Granular().SetParameterValue(Id::RandomDistance, 0.0f);
    Granular().SetParameterValue(Id::DistanceRange, 15.0f);
}

void MoteWeaverProcessor::OnEffectSetup(float rate, uint32_t frames) {
    blockSize = frames;
    storage.assign((size_t{kBufferCount} + 2 * kHeldBlocks) * frames, 0.0f);
    float* buffer = storage.data();
    for (float** pair : {feedbackSend, feedbackReturn, stage, slotOutA, slotOutB})
        for (uint32_t c = 0; c < 2; ++c, buffer += frames)
            pair[c] = buffer;
    for (uint32_t c = 0; c < 2; ++c, buffer += kHeldBlocks * frames)
        limited[c] = buffer;
    heldWet = 0;
    ramp = buffer;

    const float t = std::tan(kHighPassCorner / rate);
    dcB0 = 1.0f / (1.0f + t);
    dcB1 = -dcB0;
    dcA1 = (t - 1.0f) * dcB0;
    for (uint32_t c = 0; c < 2; ++c) {
        feedbackLines[c].Resize(RingLength(rate * kFeedbackRoom, frames));
        dryLines[c].Resize(RingLength(rate * kDryRoom, frames));
    }
    feedbackDelay = static_cast<uint32_t>(std::floor(rate * kFeedbackDelay));

    transportGain.range = 1.0;
    for (dsp::Smoother* smoother :
         std::initializer_list<dsp::Smoother*>{&feedbackGain, &dryWetMix, &granularVolume,
                                               &masterVolume, &envelopeGain, &transportGain}) {
        smoother->sampleRate = static_cast<double>(rate);
        smoother->stepLength = 1;
        smoother->UpdateCoefficients();
    }
    for (dsp::AlignedVector* row : {&lfoXOutput, &lfoYOutput}) {
        row->assign(dsp::kRowHeadFloats + frames, 0.0f);
        (*row)[dsp::kRowHeadFloats - 1] = dsp::kRowActive;
    }
    display.Setup(Granular());

    granularInputs[dsp::MoteWeaverRow::AudioLeft] = feedbackReturn[0];
    granularInputs[dsp::MoteWeaverRow::AudioRight] = feedbackReturn[1];
    granularInputs[dsp::MoteWeaverRow::StereoX] = lfoXOutput.data() + dsp::kRowHeadFloats;
    granularInputs[dsp::MoteWeaverRow::StereoY] = lfoYOutput.data() + dsp::kRowHeadFloats;
    constexpr uint32_t kFirstRow = 6;
    for (uint32_t channel = dsp::MoteWeaverRow::Pitch; channel < granularInputs.size(); ++channel)
        granularInputs[channel] = Row(kFirstRow + channel - dsp::MoteWeaverRow::Pitch);
    ConnectSlots();
    sampleRate = rate;
}

void MoteWeaverProcessor::OnEffectReset(bool) {
    for (uint32_t c = 0; c < 2; ++c) {
        std::fill_n(feedbackSend[c], blockSize, 0.0f);
        // The last return still comes back once; what has overflowed would stay for ever.
        dsp::CopyFinite(feedbackReturn[c], blockSize, feedbackReturn[c]);
        feedbackLines[c].Clear();
        dryLines[c].Clear();
        dcInput[c] = dcOutput[c] = 0.0f;
    }
    display.ResetCounters();
}

uint32_t MoteWeaverProcessor::GetLatency() { return static_cast<uint32_t>(sampleRate * kLatency); }

bool MoteWeaverProcessor::ProcessEffect(dsp::ProcessBlock& block, uint32_t channelMode) {
    if (GetBypassState() == kBypassed)
        return true;
    const Inputs in{block.inputs[0], channelMode == kStereo ? block.inputs[1] : block.inputs[0],
                    channelMode == kStereo};
    RunModulation(block, in);
    RunSpatializer(block);
    RunGranular(block, in);
    RunChild(OutputLimiter(), block, stage, 2, limited, 2);
    RunLoopSlots(block);
    RunFeedbackDelay(block.numFrames);
    ApplyGain(granularVolume, limited, 2, block.numFrames);
    ApplyGain(transportGain, limited, 2, block.numFrames);
    float** signal = RunSlotsAt(1, block, limited);
    signal = MixDry(block, in, signal);
    signal = RunSlotsAt(0, block, signal);
    WriteOutput(block, channelMode, signal);
    SendFeedback(block);
    if (stagesWatched)
        HoldWet(block.numFrames);
    return true;
}

bool MoteWeaverProcessor::RunChild(dsp::Module& child, const dsp::ProcessBlock& block,
                                   float** inputs, uint32_t inputCount, float** outputs,
                                   uint32_t outputCount) {
    dsp::ProcessBlock inner = block;
    inner.inputs = inputs;
    inner.numInputs = inputCount;
    inner.outputs = outputs;
    inner.numOutputs = outputCount;
    return child.Process(inner);
}

void MoteWeaverProcessor::RunSpatializer(const dsp::ProcessBlock& block) {
    float* rowX[] = {lfoXOutput.data() + dsp::kRowHeadFloats};
    float* rowY[] = {lfoYOutput.data() + dsp::kRowHeadFloats};
    RunChild(LfoX(), block, nullptr, 0, rowX, 1);
    RunChild(LfoY(), block, nullptr, 0, rowY, 1);
    namespace Id = dsp::MoteWeaverId;
    std::fill_n(block.auxOutputs[2], block.numFrames, Granular().Position(Id::LfoStereoX_Out));
    std::fill_n(block.auxOutputs[3], block.numFrames, Granular().Position(Id::LfoStereoY_Out));
}

void MoteWeaverProcessor::RunGranular(const dsp::ProcessBlock& block, const Inputs& in) {
    const uint32_t frames = block.numFrames;
    feedbackGain.FillBlock(ramp, frames);
    if (stagesWatched)
        WatchFeedback(frames);
    JoinFeedback(in, frames);
    HighPass(frames);
    RunChild(Granular(), block, granularInputs.data(), static_cast<uint32_t>(granularInputs.size()),
             stage, 2);
    display.Fill(Granular());
}

/// What a gain of 0 has taken, the clip leaves as it is.
void MoteWeaverProcessor::JoinFeedback(const Inputs& in, uint32_t frames) {
    const float* const sides[] = {in.left, in.right};
    const bool silent = feedbackGain.IsAtRestAt(0.0);
    for (uint32_t c = 0; c < 2; ++c) {
        float* const back = feedbackReturn[c];
        const float* const side = sides[c];
        if (silent)
            for (uint32_t i = 0; i < frames; ++i)
                back[i] = back[i] * 0.0f + side[i];
        else
            for (uint32_t i = 0; i < frames; ++i)
                back[i] = SoftClip(back[i] * ramp[i]) + side[i];
    }
}

/// The clip keeps the order of levels, so that it can wait until they are asked for; so can a gain
/// that rests. One that moves goes one way for a whole block.
void MoteWeaverProcessor::WatchFeedback(uint32_t frames) {
    const float gain = frames > 0 ? ramp[0] : 0.0f;
    const bool isMoving = frames > 0 && gain != ramp[frames - 1];
    if (isMoving || gain != restingGain)
        FoldFeedback();
    restingGain = isMoving ? 1.0f : gain;
    if (restingGain == 0.0f)
        return;
    for (uint32_t c = 0; c < 2; ++c)
        for (uint32_t i = 0; isMoving && i < frames; ++i)
            slotOutA[c][i] = feedbackReturn[c][i] * ramp[i];
    float* const* const heard = isMoving ? slotOutA : feedbackReturn;
    restingPeaks.Take(heard[0], heard[1], frames);
}

void MoteWeaverProcessor::FoldFeedback() {
    const std::array<float, 2> peaks = restingPeaks.Release();
    for (uint32_t c = 0; c < 2; ++c)
        feedbackPeaks[c] = std::max(feedbackPeaks[c], restingGain * peaks[c]);
}

/// Several blocks stand side by side until they are looked at together: a call for each would cost
/// more than the rest of it.
void MoteWeaverProcessor::HoldWet(uint32_t frames) {
    heldWet += frames;
    for (float*& channel : limited)
        channel += frames;
    if (heldWet + blockSize > kHeldBlocks * blockSize)
        MeasureWet();
}

void MoteWeaverProcessor::MeasureWet() {
    for (float*& channel : limited)
        channel -= heldWet;
    wetPeaks.Take(limited[0], limited[1], std::exchange(heldWet, 0));
}

StagePeaks MoteWeaverProcessor::TakePeaks() {
    StagePeaks peaks;
    FoldFeedback();
    MeasureWet();
    peaks.wet = wetPeaks.Release();
    for (uint32_t c = 0; c < 2; ++c)
        peaks.feedback[c] = SoftClip(std::exchange(feedbackPeaks[c], 0.0f));
    return peaks;
}

/// The inputs' part waits for nothing and comes ahead, into a buffer that the grains fill later.
/// Then both channels go side by side: each waits for its own last output.
void MoteWeaverProcessor::HighPass(uint32_t frames) {
    if (frames == 0)
        return;
    for (uint32_t c = 0; c < 2; ++c) {
        const float* const x = feedbackReturn[c];
        float* const forward = stage[c];
        forward[0] = dcB0 * x[0] + dcB1 * dcInput[c];
        for (uint32_t i = 1; i < frames; ++i)
            forward[i] = dcB0 * x[i] + dcB1 * x[i - 1];
        dcInput[c] = x[frames - 1];
    }
    const float feedback = dcA1;
    dsp::FloatLanes last = dsp::BothSides(dcOutput[0], dcOutput[1]);
    const auto step = [&last, feedback](dsp::FloatLanes forward) {
        return last = forward - feedback * last;
    };
    dsp::MapStereoSamples(stage[0], stage[1], feedbackReturn[0], feedbackReturn[1], frames, step);
    dcOutput[0] = last[0];
    dcOutput[1] = last[1];
}

/// What comes out of the lines here goes into the grains with the next block. That one may be
/// longer: the lines are read on for it, as far as they have been written, and silence follows.
void MoteWeaverProcessor::RunFeedbackDelay(uint32_t frames) {
    if (frames == 0)  // has taken nothing in, so that what waits goes on waiting
        return;
    const uint32_t more = blockSize - frames;
    const uint32_t written = std::min(more, feedbackDelay);
    for (uint32_t c = 0; c < 2; ++c) {
        dsp::DelayLine& line = feedbackLines[c];
        float* const rest = feedbackReturn[c] + frames;
        dsp::RunBlockDelay(line, feedbackDelay, feedbackSend[c], feedbackReturn[c], frames);
        dsp::CopyFromRing(line, line.writeIndex - static_cast<int32_t>(feedbackDelay),
                          static_cast<int32_t>(written), rest);
        std::fill_n(rest + written, more - written, 0.0f);
    }
}

void MoteWeaverProcessor::ApplyGain(dsp::Smoother& gain, float** channels, uint32_t count,
                                    uint32_t frames) {
    if (gain.IsAtRestAt(1.0))
        return;
    gain.FillBlock(ramp, frames);
    for (uint32_t c = 0; c < count; ++c)
        for (uint32_t i = 0; i < frames; ++i)
            channels[c][i] *= ramp[i];
}

/// Equal-power crossfade with the input, which is as late as the limiter makes the wet signal.
/// Answers where the mix is.
float** MoteWeaverProcessor::MixDry(const dsp::ProcessBlock& block, const Inputs& in,
                                    float** signal) {
    const uint32_t frames = block.numFrames;
    const auto delay = static_cast<uint32_t>(OutputLimiter().LookaheadSamples());
    dsp::RunBlockDelay(dryLines[0], delay, in.left, stage[0], frames);
    if (in.stereo)
        dsp::RunBlockDelay(dryLines[1], delay, in.right, stage[1], frames);
    else
        std::copy_n(stage[0], frames, stage[1]);
    if (dryWetMix.IsAtRestAt(1.0))
        return signal;
    constexpr float kQuarterTurn = std::numbers::pi_v<float> * 0.5f;
    const bool resting = dryWetMix.IsAtRest();
    dryWetMix.FillBlock(ramp, frames);
    float wetGain = 0.0f, dryGain = 0.0f;
    if (resting) {
        if (ramp[0] != restingMix) {
            restingMix = ramp[0];
            restingWet = dsp::UnpairedSine(restingMix * kQuarterTurn);
            restingDry = std::cos(restingMix * kQuarterTurn);
        }
        wetGain = restingWet;
        dryGain = restingDry;
        for (uint32_t c = 0; c < 2; ++c)
            for (uint32_t i = 0; i < frames; ++i)
                stage[c][i] = wetGain * signal[c][i] + dryGain * stage[c][i];
        return stage;
    }
    for (uint32_t i = 0; i < frames; ++i) {
        wetGain = dsp::UnpairedSine(ramp[i] * kQuarterTurn);
        dryGain = std::cos(ramp[i] * kQuarterTurn);
        for (uint32_t c = 0; c < 2; ++c)
            stage[c][i] = wetGain * signal[c][i] + dryGain * stage[c][i];
    }
    return stage;
}

void MoteWeaverProcessor::WriteOutput(const dsp::ProcessBlock& block, uint32_t channelMode,
                                      float** signal) {
    const uint32_t frames = block.numFrames;
    float** const out = block.outputs;
    const uint32_t count = channelMode == kMonoOut ? 1 : 2;
    if (channelMode == kMonoOut) {
        for (uint32_t i = 0; i < frames; ++i)
            out[0][i] = (signal[0][i] + signal[1][i]) * 0.5f;
    } else {
        for (uint32_t c = 0; c < 2; ++c)
            if (out[c] != signal[c])
                std::copy_n(signal[c], frames, out[c]);
    }
    ApplyGain(masterVolume, out, count, frames);
    dsp::DigitalPPM::ProcessPair(Child<12>(), Child<13>(), block, out);
}

}  // namespace Quorvan::Processor

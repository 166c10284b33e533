#include "effects/PitchShiftDelay.h"

#include <algorithm>
#include <cmath>
#include <utility>

#include "effects/NoteValues.h"
#include "effects/StereoInputs.h"
#include "framework/ParameterTable.h"
#include "primitives/Clock.h"
#include "primitives/PolynomialReads.h"
#include "primitives/RingStretch.h"
#include "primitives/Xorshift.h"

namespace Quorvan::dsp {

namespace {

constexpr float kLongestMs = 4000.0f;           // unless DelayTimeMs reaches further
constexpr float kRoomForOffset = 0.020000001f;  // seconds
constexpr int32_t kSpareSamples = 10;           // of the main line, for interpolation
constexpr double kDelayGlideSeconds = 0.5;      // five time constants
constexpr double kOffsetThreshold = 1e-20;
constexpr float kShortestNote = 0.0001f, kLongestNote = 4.0f;  // seconds, of the straight note
constexpr float kTriplet = 0.6666667f, kDotted = 1.5f;

const ParameterTable& Table() {
    using P = ParameterSpec;
    constexpr uint32_t exponential = PotardKind::kExponential;
    static const ParameterTable table = {
        P::Stepped("Stereo", 2).AtValue(1.0f),
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
        P::Raw("ModDelayConnected"),
        P::Raw("ModOffsetConnected"),
    };
    return table;
}

}  // namespace

PitchShiftDelay::PitchShiftDelay(std::string moduleName)
    : UnitModule(std::move(moduleName), 2, 2, Table()) {
    spray.state = prims::SeedFromClock();
}

void PitchShiftDelay::OnSetup(float rate, uint32_t blockSize) {
    sampleRate = rate;
    inverseSampleRate = 1.0f / rate;
    samplesPerMs = rate * 0.001f;
    blockFrames = blockSize;
    const Parameter& delayTime = parameters[DelayTimeMs];
    minDelaySamples = delayTime.minValue * 0.001f * rate;
    maxDelaySamples = (std::max(delayTime.maxValue, kLongestMs) * 0.001f + kRoomForOffset) * rate;
    chunkLength = std::clamp(static_cast<uint32_t>(minDelaySamples), 2u, kChunk + 1) - 1;
    for (uint32_t c = 0; c < kChannels; ++c) {
        taps[c].Setup(rate);
        mainLine[c].Resize(static_cast<int32_t>(maxDelaySamples) + kSpareSamples,
                           DelayLine::Clearing::BitByBit);
    }

    detuneMixSmoother.stepLength = 1;
    detuneMixSmoother.sampleRate = static_cast<double>(rate);
    detuneMixSmoother.rampSteps = blockSize;
    detuneMixSmoother.UpdateCoefficients();
    for (const auto& [smoother, id] :
         {std::pair{&lowPassSmoother, LPFreq}, {&highPassSmoother, HPFreq}}) {
        smoother->stepLength = blockSize;
        smoother->sampleRate = static_cast<double>(rate);
        smoother->range = static_cast<double>(parameters[id].maxValue - parameters[id].minValue);
        smoother->UpdateCoefficients();
    }
    delayCoefficient = 1.0 - std::exp(-5.0 / (kDelayGlideSeconds * static_cast<double>(rate)));
    delayBuffer.assign(blockSize, 0.0f);
    offsetBuffer.assign(blockSize, 0.0f);
    UpdateFilters();
}

void PitchShiftDelay::OnReset(bool) {
    for (uint32_t c = 0; c < kChannels; ++c) {
        taps[c].Reset();
        mainLine[c].Clear();
    }
}

bool PitchShiftDelay::UpdateParameters(ProcessBlock&) {
    if (needsFullUpdate)
        Snap();
    UpdateSwitches();
    const float detune = DetuneSemitones();
    taps[0].SetPitch(Value(PitchShift) - detune);
    taps[1].SetPitch(Value(PitchShift) + detune);
    detuneMixSmoother.SetTarget(std::clamp(std::abs(detune * 100.0f), 0.0f, 1.0f));
    spray.samples = sampleRate * 0.001f * Value(Spray);
    UpdateDelays();
    feedback = Value(Feedback);
    highPassSmoother.SetTarget(Value(HPFreq));
    lowPassSmoother.SetTarget(Value(LPFreq));
    const float highPassBefore = std::exchange(highPassHz, highPassSmoother.Tick());
    const float lowPassBefore = std::exchange(lowPassHz, lowPassSmoother.Tick());
    if (highPassHz != highPassBefore || lowPassHz != lowPassBefore)
        UpdateFilters();
    return true;
}

bool PitchShiftDelay::OnProcess(ProcessBlock& block) {
    for (uint32_t c = 0; c < kChannels; ++c) {
        mainLine[c].Wipe();
        taps[c].Wipe();
    }
    tempo = block.tempo;
    const bool interpolate = Position(ModDelayConnected) > 0.5f ||
                             Position(ModOffsetConnected) > 0.5f || !delayGlide.IsAtRest() ||
                             !offsetGlide.IsAtRest();
    for (uint32_t at = 0; at < block.numFrames; at += chunkLength)
        RunChunk(block, at, std::min(chunkLength, block.numFrames - at), interpolate);
    return true;
}

/// To the targets at once. Comes ahead of UpdateSwitches, so that the sync state is the old one,
/// and the offset goes to where it was headed.
void PitchShiftDelay::Snap() {
    delayGlide.current = delayGlide.target = static_cast<double>(DelayInSamples());
    offsetGlide.current = offsetGlide.target;
    highPassSmoother.Reset(Value(HPFreq));
    lowPassSmoother.Reset(Value(LPFreq));
    highPass.Clear();
    lowPass.Clear();
    const float detune = DetuneSemitones();
    detuneMixSmoother.Reset(std::clamp(std::abs(detune * 100.0f), 0.0f, 1.0f));
    taps[0].Snap(Value(PitchShift) - detune);
    taps[1].Snap(Value(PitchShift) + detune);
}

void PitchShiftDelay::UpdateSwitches() {
    if (IsChanged(Stereo))
        channelCount = Value(Stereo) > 0.5f ? 2 : 1;
    if (IsChanged(Window))
        window = static_cast<TapWindow>(Index(Window));
    if (IsChanged(MidiSync))
        isSynced = Value(MidiSync) >= 0.5f;
    if (IsChanged(RateSyncedType))
        rateType = Index(RateSyncedType);
}

/// What the delay parameters ask for, before the limits of the line.
float PitchShiftDelay::DelayInSamples() {
    if (!isSynced)
        return Value(DelayTimeMs) * samplesPerMs;
    const float note = kNoteValues[static_cast<size_t>(Index(DelayTimeSynced))];
    float seconds = std::clamp(240.0f / tempo * note, kShortestNote, kLongestNote);
    if (rateType == 1)
        seconds *= kTriplet;
    else if (rateType == 2)
        seconds *= kDotted;
    return seconds * sampleRate;
}

void PitchShiftDelay::UpdateDelays() {
    const auto delay =
        static_cast<double>(std::clamp(DelayInSamples(), minDelaySamples, maxDelaySamples));
    delayGlide.target = delay;
    delayGlide.threshold = std::max(delay * 1e-12, 1e-15);
    offsetGlide.target = static_cast<double>(samplesPerMs * 0.5f * Value(DelayOffset));
    offsetGlide.threshold = kOffsetThreshold;
    SampleGlide::FillTwo(delayGlide, delayBuffer.data(), offsetGlide, offsetBuffer.data(),
                         blockFrames, delayCoefficient);
}

void PitchShiftDelay::UpdateFilters() {
    const float high = BiquadCoefficients::StableCorner(highPassHz, inverseSampleRate);
    const float low = BiquadCoefficients::StableCorner(lowPassHz, inverseSampleRate);
    highPass.coefficients = BiquadCoefficients::HighPass(high, BiquadCoefficients::FlatAlpha(high));
    lowPass.coefficients = BiquadCoefficients::LowPass(low, BiquadCoefficients::FlatAlpha(low));
}

void PitchShiftDelay::RunChunk(const ProcessBlock& block, uint32_t from, uint32_t count,
                               bool interpolate) {
    const uint32_t last = channelCount - 1;
    PitchTaps::Advance({&taps[0], &taps[last]}, spray, window, {&courses[0], &courses[last]},
                       count);
    LeaveDraws(count);
    for (uint32_t c = 0; c < channelCount; ++c) {
        ReadMainLine(c, from, count, interpolate);
        taps[c].Push(delayed[c].data(), count);
    }
    taps[0].Read(courses[0], shifted[0].data(), count);
    ReadRightTaps(count);
    Filter(count);

    // Every input is read ahead of the outputs, which may lie on top.
    const auto inputs = StereoInputs(block);
    for (uint32_t c = 0; c < channelCount; ++c) {
        Samples sum;
        for (uint32_t i = 0; i < count; ++i)
            sum[i] = shifted[c][i] * feedback + inputs[c][from + i];
        WriteToRing(mainLine[c], sum.data(), static_cast<int32_t>(count));
    }
    for (uint32_t c = 0; c < channelCount; ++c)
        std::copy_n(shifted[c].data(), count, block.outputs[c] + from);
}

/// Two draws a sample are used up, whether or not a tap has needed them.
void PitchShiftDelay::LeaveDraws(uint32_t count) {
    if (count == kChunk) {
        spray.state = prims::XorshiftLeap<2 * kChunk>::From(spray.state);
        return;
    }
    for (uint32_t i = 0; i < 2 * count; ++i)
        prims::XorshiftStep(spray.state);
}

bool PitchShiftDelay::HasSpanMoving(uint32_t sample) const {
    return courses[0].spanMoves[sample] ||
           (channelCount == kChannels && courses[1].spanMoves[sample]);
}

/// The line is written behind the chunk: here it still stands at the chunk's start.
void PitchShiftDelay::ReadMainLine(uint32_t channel, uint32_t from, uint32_t count,
                                   bool interpolate) {
    const DelayLine& line = mainLine[channel];
    const float side = channel == 0 ? -1.0f : 1.0f;
    Samples fraction;
    std::array<int32_t, kChunk> whole;
    uint32_t changes = 0;
    for (uint32_t i = 0; i < count; ++i) {
        const float delay =
            delayBuffer[from + i] - 0.5f * courses[channel].span[i] + side * offsetBuffer[from + i];
        const float low = delay < minDelaySamples ? minDelaySamples : delay;
        const float held = low > maxDelaySamples ? maxDelaySamples : low;
        whole[i] = static_cast<int32_t>(held);
        fraction[i] = held - static_cast<float>(whole[i]);
    }
    for (uint32_t i = 0; i < count; ++i)
        changes |= static_cast<uint32_t>(whole[i] ^ whole[0]) | (HasSpanMoving(i) ? 1 : 0);
    float* const out = delayed[channel].data();
    if (!interpolate && changes == 0)
        CopyFromRing(line, line.writeIndex - whole[0], static_cast<int32_t>(count), out);
    else
        ReadBetween(line, whole.data(), fraction.data(), interpolate, out, count);
}

/// Reads with interpolation, except where nothing moves.
void PitchShiftDelay::ReadBetween(const DelayLine& line, const int32_t* whole,
                                  const float* fraction, bool interpolate, float* out,
                                  uint32_t count) const {
    std::array<int32_t, kChunk> back;
    for (uint32_t i = 0; i < count; ++i)
        back[i] = whole[i] - static_cast<int32_t>(i);
    PolynomialReads::Read(line, back.data(), fraction, count, out);
    for (uint32_t i = 0; !interpolate && i < count; ++i)
        if (!HasSpanMoving(i))
            out[i] = line.PointsAround(back[i]).a;
}

void PitchShiftDelay::FillDetuneMix(float* mix, uint32_t count) {
    if (detuneMixSmoother.HasArrived()) {
        std::fill_n(mix, count, static_cast<float>(detuneMixSmoother.current));
        return;
    }
    for (uint32_t i = 0; i < count; ++i)
        mix[i] = detuneMixSmoother.Tick();
}

/// The right signal through its own taps and through the left ones, mixed.
void PitchShiftDelay::ReadRightTaps(uint32_t count) {
    Samples mix;
    FillDetuneMix(mix.data(), count);
    if (channelCount < 2)
        return;
    const auto hasOnly = [&](float weight) {
        return std::all_of(mix.begin(), mix.begin() + static_cast<std::ptrdiff_t>(count),
                           [weight](float w) { return w == weight; });
    };
    Samples& out = shifted[1];
    if (hasOnly(0.0f)) {
        taps[1].Read(courses[0], out.data(), count);
        return;
    }
    taps[1].Read(courses[1], out.data(), count);
    if (hasOnly(1.0f))
        return;
    Samples linked;
    taps[1].Read(courses[0], linked.data(), count);
    for (uint32_t i = 0; i < count; ++i)
        out[i] = out[i] * mix[i] + linked[i] * (1.0f - mix[i]);
}

void PitchShiftDelay::Filter(uint32_t count) {
    if (channelCount == 2) {
        const std::array<float*, 2> both{shifted[0].data(), shifted[1].data()};
        StereoBiquad::ProcessInSeries(highPass, lowPass, both, count);
    } else {
        highPass.ProcessOne(0, shifted[0].data(), count);
        lowPass.ProcessOne(0, shifted[0].data(), count);
    }
}

}  // namespace Quorvan::dsp

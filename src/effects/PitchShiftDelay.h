#pragma once

#include <array>
#include <cstdint>
#include <string>

#include "effects/PitchTaps.h"
#include "effects/SampleGlide.h"
#include "effects/TapWindow.h"
#include "framework/UnitModule.h"
#include "primitives/AlignedVector.h"
#include "primitives/Biquad.h"
#include "primitives/DelayLine.h"
#include "primitives/SmootherInterpLPF.h"
#include "primitives/SmootherSRL.h"

namespace Quorvan::dsp {

/// Delay with a pitch shifter, a high-pass and a low-pass in its loop: each echo is shifted further
/// than the one before.
///
/// Inputs      0, 1 audio; a missing right one reads as the left one
/// Outputs     0, 1 audio, fully wet, in place allowed; with Stereo off only 0 is written
/// Parameters  0 Stereo one channel, two (default)
///             1 DelayTimeMs 1..2000, 2 DelayTimeSynced index into the note values: the delay
///               glides in 0.5 s
///             3 Feedback 0..1: read once a block, jumps
///             4 PitchShift -24..24 semitones: glides in 0.5 s
///             5 Window 0 raised cosine, 1 quarter sine, 2 linear: fades of the shifter's taps
///             6 Spray 0..500 ms: random extra delay of each tap, drawn once a cycle
///             7 HPFreq 20..10000 Hz, 8 LPFreq 250..20000 Hz: slewed, the whole range in 4 ms
///             9 MidiSync from 0.5 on: DelayTimeSynced counts, at the tempo of the block before
///             10 RateSyncedType 0 straight, 1 triplet, 2 dotted
///             11 DelayOffset -20..20 ms: right delay less left delay, glides as the delay does
///             12 Detune -100..100 cents: right shift less left shift. At 0 the right channel goes
///               by the left taps, from 2 cents on by its own.
///             13 ModDelayConnected, 14 ModOffsetConnected above 0.5: what they stand for is being
///               modulated, so that the delay is read with interpolation also while it rests
/// Latency     not reported; one sample more than the delay asked for
/// Method      While all rests the delay is read at whole samples. The first block behind a reset
///             jumps to its targets, except that it takes the sync state as the blocks before left
///             it, and at first as synced.
class PitchShiftDelay final : public UnitModule {
public:
    enum Id : uint32_t {
        Stereo,
        DelayTimeMs,
        DelayTimeSynced,
        Feedback,
        PitchShift,
        Window,
        Spray,
        HPFreq,
        LPFreq,
        MidiSync,
        RateSyncedType,
        DelayOffset,
        Detune,
        ModDelayConnected,
        ModOffsetConnected
    };
    static constexpr uint32_t kParameterCount = 15;

    explicit PitchShiftDelay(std::string moduleName);

    void OnSetup(float rate, uint32_t blockSize) override;
    void OnReset(bool hard) override;
    bool UpdateParameters(ProcessBlock& block) override;
    bool OnProcess(ProcessBlock& block) override;

private:
    static constexpr uint32_t kChannels = 2;
    static constexpr uint32_t kChunk = PitchTaps::kChunk;
    using Samples = std::array<float, kChunk>;

    void Snap();
    void UpdateSwitches();
    float DelayInSamples();
    void UpdateDelays();
    void UpdateFilters();
    float DetuneSemitones() { return Value(Detune) * 0.005f; }

    void RunChunk(const ProcessBlock& block, uint32_t from, uint32_t count, bool interpolate);
    void LeaveDraws(uint32_t count);
    void ReadMainLine(uint32_t channel, uint32_t from, uint32_t count, bool interpolate);
    void ReadBetween(const DelayLine& line, const int32_t* whole, const float* fraction,
                     bool interpolate, float* out, uint32_t count) const;
    bool HasSpanMoving(uint32_t sample) const;
    void FillDetuneMix(float* mix, uint32_t count);
    void ReadRightTaps(uint32_t count);
    void Filter(uint32_t count);

    // Coefficients.
    uint32_t blockFrames = 0;
    float sampleRate = 0.0f, inverseSampleRate = 0.0f, samplesPerMs = 0.0f;
    float minDelaySamples = 0.0f, maxDelaySamples = 0.0f;
    uint32_t chunkLength = 1;  ///< so short that the delay lines are read ahead of what it writes
    double delayCoefficient = 0.0;
    uint32_t channelCount = kChannels;
    TapWindow window = TapWindow::kRaisedCosine;
    float feedback = 0.0f;
    float highPassHz = 0.0f, lowPassHz = 0.0f;
    float tempo = 100.0f;  ///< beats per minute, of the last block
    bool isSynced = true;
    int32_t rateType = 0;

    // State.
    StereoBiquad lowPass, highPass;
    std::array<PitchTaps, kChannels> taps;
    std::array<DelayLine, kChannels> mainLine;
    SampleGlide delayGlide, offsetGlide;       // samples
    SmootherInterpLPF detuneMixSmoother{0.1};  // weight of the right channel's own taps
    SmootherSRL lowPassSmoother{0.004}, highPassSmoother{0.004};  // hertz, one tick a block
    PitchTaps::Spray spray;

    // Buffers of one block.
    AlignedVector delayBuffer;   ///< samples
    AlignedVector offsetBuffer;  ///< samples
    // Buffers of one chunk.
    std::array<PitchTaps::Course, kChannels> courses;
    std::array<Samples, kChannels> delayed;  ///< out of the main lines
    std::array<Samples, kChannels> shifted;
};

}  // namespace Quorvan::dsp

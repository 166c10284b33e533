#pragma once

#include <array>
#include <cstdint>
#include <string>

#include "framework/UnitModule.h"
#include "primitives/AlignedVector.h"
#include "primitives/Biquad.h"
#include "primitives/DelayLine.h"
#include "primitives/SmootherInterpLPF.h"
#include "primitives/SmootherLPF.h"
#include "primitives/SmootherSRL.h"

namespace Quorvan::dsp {

/// Stereo echo with a high-pass and a low-pass in the loop: two separate channels, the right one a
/// little longer, or a ping-pong over both lines.
///
/// Inputs      0, 1 audio, a missing right one is silence; 2 to 8 modulation rows of Wet, the delay
///             time in force, Feedback, HPFreq, LPFreq, the stereo width in force and DelayFineMs;
///             9 vibrato -1..1; read once a block
/// Outputs     0, 1 audio, the right one may be missing; in place allowed
/// Parameters  0 DelayTimeMs 2..2000 ms: glides in 0.2 s, as all that goes into the delay
///             1 Feedback 0..1: read once a block, jumps
///             2 Wet 0..1: full dry up to 0.5, full wet from 0.5 on; glides in 2 ms
///             3 HPFreq 20..10000 Hz, 4 LPFreq 250..20000 Hz: slewed, the whole range in 4 ms
///             5 StereoWidth 0..0.2: stereo only, the share by which the right delay is longer
///             6 StereoWidthPP 0..1: ping-pong only, 0 mixes both echoes to the middle
///             7 StereoMode 0 stereo, 1 ping-pong
///             8 MidiSync 0 DelayTimeMs counts, 1 DelayTimeSynced
///             9 RateSyncedType 0 straight, 1 triplet, 2 dotted
///             10 DelayTimeSynced index into the note values; the longest that fits 4 s counts
///             11 DelayFineMs -50..50 ms: added to either delay
///             12 VibratoMaxAmount 0..100 ms: excursion at a vibrato of 1
/// Latency     none
/// Method      While nothing moves or modulates the delay, it is read at whole samples, rounded
///             down; else through a polynomial over four. A ping-pong echo passes filters and
///             feedback once on its way through both lines.
class Delay final : public UnitModule {
public:
    enum Id : uint32_t {
        DelayTimeMs,
        Feedback,
        Wet,
        HPFreq,
        LPFreq,
        StereoWidth,
        StereoWidthPP,
        StereoMode,
        MidiSync,
        RateSyncedType,
        DelayTimeSynced,
        DelayFineMs,
        VibratoMaxAmount
    };
    static constexpr uint32_t kParameterCount = 13;

    explicit Delay(std::string moduleName);

    void OnSetup(float rate, uint32_t blockSize) override;
    void OnReset(bool hard) override;
    bool UpdateParameters(ProcessBlock& block) override;
    bool OnProcess(ProcessBlock& block) override;

private:
    static constexpr uint32_t kChannels = 2;
    using Buffers = std::array<AlignedVector, kChannels>;

    void SetupSmoothers();
    float DelayInSamples(float timeMs, float noteIndex) const;
    float TargetDelay(const ProcessBlock& block);
    void FillDelays(const ProcessBlock& block);
    bool Interpolates(const ProcessBlock& block) const;
    void FillGains(const ProcessBlock& block);
    void UpdateFilters(const ProcessBlock& block);
    void ComputeHighPass();
    void ComputeLowPass();

    uint32_t ChunkLength(uint32_t frames) const;
    void RunChunk(const ProcessBlock& block, uint32_t from, uint32_t count, bool interpolate);
    void ReadLines(uint32_t from, uint32_t count, bool interpolate);
    void Filter(uint32_t from, uint32_t count);
    void EchoStereo(const ProcessBlock& block, uint32_t from, uint32_t count);
    void EchoPingPong(const ProcessBlock& block, uint32_t from, uint32_t count);
    void Mix(const ProcessBlock& block, uint32_t from, uint32_t count) const;

    // Coefficients.
    uint32_t blockFrames = 0;
    float sampleRate = 0.0f, inverseSampleRate = 0.0f, samplesPerMs = 0.0f;
    float minDelaySamples = 0.0f, maxDelaySamples = 0.0f;  ///< whole numbers
    float feedback = 0.0f;                                 ///< of this block
    float highPassHz = 0.0f, lowPassHz = 0.0f;             ///< of this block
    float tempo = 100.0f;                                  ///< beats per minute, of the last block
    float vibratoMs = 0.0f;
    bool isStereoMode = true;
    bool isSynced = true;
    int32_t rateType = 0;

    // State.
    StereoBiquad lowPass, highPass;
    std::array<DelayLine, kChannels> lines;
    SmootherInterpLPF pingPongWidthSmoother{0.002};               // one tick a sample
    SmootherInterpLPF wetSmoother{0.002};                         // 0..2, one tick a sample
    SmootherSRL lowPassSmoother{0.004}, highPassSmoother{0.004};  // hertz, one tick a block
    SmootherLPF delaySmoother{0.2};                               // samples, one tick a sample
    SmootherLPF stereoOffsetSmoother{0.2};                        // one tick a sample

    // Buffers of one block.
    AlignedVector wetGain, dryGain, stereoOffset, pingPongWidth;
    Buffers delaySamples;  ///< of each channel
    Buffers echo;          ///< out of the lines
    Buffers wet;           ///< the same behind the filters, then as it is heard
};

}  // namespace Quorvan::dsp

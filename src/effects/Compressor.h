#pragma once

#include <array>
#include <cstdint>
#include <string>

#include "effects/CompressionCurve.h"
#include "effects/LookaheadGain.h"
#include "framework/UnitModule.h"
#include "primitives/AlignedVector.h"
#include "primitives/DelayLine.h"
#include "primitives/HeldRow.h"
#include "primitives/SmootherInterpLPF.h"
#include "primitives/SmootherLPF.h"

namespace Quorvan::dsp {

/// Feed-forward compressor in decibels, with a soft knee, automatic makeup, stereo linking and a
/// look-ahead in which the gain falls along a straight line.
///
/// Inputs      0, 1 audio, the right one may be null: then one channel runs; 2 to 5 modulation rows
///             of Wet, Release, Threshold and Ratio, read once a block
/// Outputs     0, 1 audio, in place allowed. The dry share is the raw input, without delay.
/// Parameters  0 Wet 0..1, smoothed over 10 ms
///             1 InGainCompensated -36..36 dB: added to the input gain, taken off the output gain;
///               takes effect when one of these two is written
///             2 InputGain -18..18 dB, 3 OutputGain -36..36 dB: glide in 50 ms
///             4 Attack 0.01..1000 ms, 5 Release 1..2000 ms: time constants of the gain in dB
///             6 Threshold -80..0 dB, 7 Ratio 1..100: glide in 50 ms
///             8 RatioInfinite off, on
///             9 KneeWidth 0..20 dB
///             10 Makeup off, on
///             11 StereoMode off, on: both channels follow the louder one
///             12 OutGainReduction 0..1: written by the module, 0.5 at about 19 dB of reduction
///             13 LevelMeasureSmoothAR off, on: the detector has an attack and a release, of
///             14 LevelMeasureAtMs, 15 LevelMeasureReMs 0.01..1000 ms
///             16 LookaheadEnable off, on; 17 LookaheadTimeMs 0.01..10 ms
/// Latency     the look-ahead
class Compressor : public UnitModule {
public:
    enum Id : uint32_t {
        Wet,
        InGainCompensated,
        InputGain,
        OutputGain,
        Attack,
        Release,
        Threshold,
        Ratio,
        RatioInfinite,
        KneeWidth,
        Makeup,
        StereoMode,
        OutGainReduction,
        LevelMeasureSmoothAR,
        LevelMeasureAtMs,
        LevelMeasureReMs,
        LookaheadEnable,
        LookaheadTimeMs
    };
    static constexpr uint32_t kParameterCount = 18;

    explicit Compressor(std::string moduleName);

    void OnSetup(float rate, uint32_t blockSize) override;
    void OnReset(bool hard) override;
    bool UpdateParameters(ProcessBlock& block) override;
    bool OnProcess(ProcessBlock& block) override;

    /// Latency of the wet path; 0 where the look-ahead is off.
    int32_t LookaheadSamples() const { return lookaheadSamples; }

private:
    static constexpr uint32_t kChannels = 2;

    bool IsOn(uint32_t id) { return Position(id) >= 0.5f; }
    float PerSample(float timeMs) const;
    float InputGainTarget();
    float OutputGainTarget();
    void UpdateLookahead();
    void ClearRings();
    void UpdateGains();
    void ReadBlockTargets(const ProcessBlock& block);
    void FillWet(uint32_t count);
    void UpdateCurve();

    void FillDetectorInput(uint32_t pass, const float* a, const float* b, uint32_t count);
    void FollowLevel(uint32_t pass, uint32_t count);
    bool IsIdle(uint32_t pass, uint32_t count) const;
    void FillGains(uint32_t passes, uint32_t count);
    void DelayGains(uint32_t passes, uint32_t count);
    bool IsPlain(uint32_t pass) const;
    void FollowGains(uint32_t a, uint32_t b, uint32_t count);
    void WriteChannel(uint32_t channel, uint32_t pass, const float* in, float* out, uint32_t count);
    void WritePlain(uint32_t channel, const float* in, float* out, uint32_t count);
    float MeterValue(uint32_t passes) const;

    float sampleRate = 0.0f;

    // Coefficients.
    int32_t lookaheadSamples = 0;
    float inGainLinear = 0.0f;   ///< of this block
    float outGainLinear = 0.0f;  ///< of this block
    float attackCoefficient = 0.0f;
    float releaseCoefficient = 0.0f;
    float releaseTime = -1.0f;  ///< milliseconds that the coefficient is for
    bool stereoLinked = false;
    uint32_t detectorCount = 1;  ///< 1 linked, 2 separate
    float kneeWidth = 0.0f;      ///< dB
    CompressionCurve curve;      ///< of this block
    bool makeupOn = false;
    float makeupGain = 1.0f;  ///< linear
    bool levelSmoothOn = false;
    bool ratioInfinite = false;
    float levelAttackCoefficient = 0.0f;
    float levelReleaseCoefficient = 0.0f;

    // State.
    std::array<float, kChannels> detectorLevel{};  ///< linear
    std::array<float, kChannels> gainReduction{};  ///< smoothed gain in dB, at or below 0
    std::array<DelayLine, kChannels> inputRings;
    std::array<LookaheadGain, kChannels> gainRings;
    SmootherLPF inGainSmoother{0.05}, outGainSmoother{0.05};   // linear, one tick a block
    SmootherLPF ratioSmoother{0.05}, thresholdSmoother{0.05};  // one tick a block
    SmootherInterpLPF wetSmoother{0.01};                       // one tick a sample

    // Block buffers.
    AlignedVector wetBuffer;              ///< wet share of each sample
    HeldRow heldWet;                      ///< what it holds
    bool allWet = false;                  ///< all shares are 1
    std::array<bool, kChannels> unity{};  ///< of each pass: all gains of this block are 1
    /// Of each pass: detector input, level, then gain.
    std::array<AlignedVector, kChannels> gainBuffers;
    AlignedVector drivenSignal;   ///< one channel behind the input gain
    AlignedVector delayedSignal;  ///< the same behind the look-ahead
};

}  // namespace Quorvan::dsp

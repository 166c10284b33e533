#pragma once

#include <array>
#include <cstdint>
#include <string>

#include "effects/HeadGap.h"
#include "effects/HeadLoss.h"
#include "effects/TapeDcBlock.h"
#include "effects/TapeTransport.h"
#include "framework/UnitModule.h"
#include "modulation/EnvFollower.h"
#include "primitives/AlignedVector.h"
#include "primitives/Biquad.h"
#include "primitives/SmootherInterpLPF.h"
#include "primitives/SmootherSRL.h"

namespace Quorvan::dsp {

/// Tape loop echo: record equaliser, a tape whose speed has inertia and flutter, a saturating
/// playback head with an equaliser, losses and a gap that follow the delay time, and feedback
/// around all of it.
///
/// Inputs      0, 1 audio, a missing right one reads as the left one; 2 to 9 modulation rows of
///             DryWet, the delay time in force, DelayTimeFine, Intensity, InputVolume, the stereo
///             width in force, HPFreq and LPFreq, read once a block
/// Outputs     0, 1 audio, in place allowed
/// Parameters  0 InputVolume -12..12 dB: glides in 0.1 s
///             1 DelayTime 10..1000 ms, 2 DelayTimeFine -50..50 ms: the tape follows in 1 to 2 s
///             3 Intensity 0..1.2: 0.915 of it is the loop gain, glides in 0.1 s
///             4 DryWet 0..1: full dry up to 0.5, full wet from 0.5 on; glides in 0.2 s
///             5 DelayTimeType 0 free, 1 straight, 2 triplet, 3 dotted
///             6 DelayTimeSynced index into the note values, of at most 4 s
///             7 DelayType 0 stereo, 1 ping-pong
///             8 StereoWidth 0..1: stereo only, the right delay is longer by up to 20 %
///             9 StereoWidthPP 0..1: ping-pong only, 0 mixes both echoes to the middle
///             10 LPFreq 250..20000 Hz, 11 HPFreq 20..10000 Hz: filters of the input, slewed
///             12 PeakMeter 0, 1: written by the module, 1 while the tape is overloaded
///             13 ConfInGainCompensated -36..36 dB: level into the tape, taken out again behind it
/// Latency     none reported
/// Method      The saturation bounds every pass, so that loop gains above 1 settle. The tape gets
///             20 dB more than ConfInGainCompensated says. The filters of the heads are worked out
///             only where the delay has moved.
class SpaceEchoLite final : public UnitModule {
public:
    enum Id : uint32_t {
        InputVolume,
        DelayTime,
        DelayTimeFine,
        Intensity,
        DryWet,
        DelayTimeType,
        DelayTimeSynced,
        DelayType,
        StereoWidth,
        StereoWidthPP,
        LPFreq,
        HPFreq,
        PeakMeter,
        ConfInGainCompensated
    };
    static constexpr uint32_t kParameterCount = 14;

    explicit SpaceEchoLite(std::string moduleName);

    void OnSetup(float rate, uint32_t blockSize) override;
    void OnReset(bool hard) override;
    bool UpdateParameters(ProcessBlock& block) override;
    bool OnProcess(ProcessBlock& block) override;

private:
    static constexpr uint32_t kChannels = TapeTransport::kChannels;
    static constexpr uint32_t kChunk = TapeTransport::kChunk;
    using Samples = TapeTransport::Samples;
    using Stereo = std::array<Samples, kChannels>;

    static std::array<float*, kChannels> Pointers(Stereo& signal) {
        return {signal[0].data(), signal[1].data()};
    }
    bool IsPingPong() const { return delayType == 1; }

    void UpdateFilters(ProcessBlock& block);
    void UpdateWidths(ProcessBlock& block);
    /// Both delays in samples, from values in milliseconds or a note index.
    std::array<float, kChannels> Delays(float time, float note, float fineMs,
                                        float widthFactor) const;
    void FillGains(uint32_t count);
    void FollowLevel(const ProcessBlock& block);

    void RunChunk(const ProcessBlock& block, uint32_t from, uint32_t count);
    void TakeInput(const ProcessBlock& block, uint32_t from, uint32_t count);
    void PassHeads(uint32_t count);
    void FillIntensity(uint32_t count);
    void RecordStereo(uint32_t from, uint32_t count);
    void RecordPingPong(uint32_t from, uint32_t count);
    void Mix(const ProcessBlock& block, uint32_t from, uint32_t count);

    // Coefficients.
    uint32_t blockFrames = 0;
    float sampleRate = 0.0f, inverseSampleRate = 0.0f, samplesPerMs = 0.0f;
    int32_t rateType = 0;
    int32_t delayType = 0;
    float tempo = 100.0f;  ///< beats per minute, of the last block
    float inGain = 1.0f, outGain = 1.0f;
    float highPassHz = 0.0f, lowPassHz = 0.0f;  ///< 0 where the filters are to be worked out anew

    // State.
    TapeTransport transport;
    StereoBiquad highPass, lowPass;  // of the input
    StereoBiquad recordShelf, playbackShelf, bump;
    HeadLoss headLoss;
    std::array<HeadGap, kChannels> headGap;
    std::array<TapeDcBlock, kChannels> dcBlock;
    EnvFollower envelope;
    SmootherInterpLPF intensitySmoother{0.1};                     // one tick a sample
    SmootherInterpLPF widthSmoother{0.01};                        // one tick a block
    SmootherInterpLPF pingPongSmoother{0.1};                      // one tick a sample
    SmootherInterpLPF inputSmoother{0.1};                         // linear, one tick a sample
    SmootherInterpLPF wetSmoother{0.2};                           // 0..2, one tick a sample
    SmootherSRL lowPassSmoother{0.004}, highPassSmoother{0.004};  // hertz, one tick a block

    // Buffers of one block.
    AlignedVector pingPongWidth, wetGain, dryGain, inputGain, envelopeIn, envelopeOut;
    // Buffers of one chunk.
    TapeTransport::Chunk tape;
    Stereo input;     ///< behind the input filters
    Stereo recorded;  ///< the same behind the record equaliser
    Stereo head;      ///< from the playback heads
    Stereo wet;
    Samples intensity;  ///< gain of the loop
};

}  // namespace Quorvan::dsp

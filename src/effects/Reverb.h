#pragma once

#include <array>
#include <cstdint>
#include <string>

#include "effects/DattorroCore.h"
#include "effects/EarlyReflections.h"
#include "framework/ModuleContainer.h"
#include "primitives/AlignedVector.h"
#include "primitives/OnePole.h"
#include "primitives/SmootherInterpLPF.h"
#include "primitives/SmootherLPF.h"

namespace Quorvan::dsp {

/// Plate reverb: the band-limited input goes as a mean of both sides into a DattorroCore and, each
/// side with a share of the other, into early reflections. The dry path takes the input as it
/// comes.
///
/// Inputs      0, 1 audio; 2 to 8 modulation rows of Wet, LPBandWith, HPBandWith and the core's
///             Decay, E_Size, Predelay and Damping; 9 a row that moves the core's size by a tenth
/// Outputs     0, 1 audio, in place allowed
/// Parameters  those of the core but for its InterpType, then
///             13 LPBandWith 100..20000 Hz, 14 HPBandWith 30..10000 Hz: input filters, jump
///             15 Wet 0..1: equal power, glides in 2 ms
///             16 EarlyOn
///             17 EarlySize 0..1: spread of the early reflections; 1 is a hundredth of their table
///             18 EarlyMix 0..1: their share against the plate, glides in 2 ms
///             19 InvertEarly: above 0.5 their gains run from the last to the first
///             20 OutputGain -20..20 dB: of wet and dry, glides in 2 ms
///             21 MSMix 0..0.5: gain of the side against that of the middle, 0 mono, 0.5 stereo;
///               glides in 50 ms
///             22 SmoothTimeDelayCont 0..1 s: time of EarlySize's glide
/// Latency     none reported
class Reverb final : public ModuleContainer<DattorroCore> {
public:
    /// Own parameters, behind those of the core.
    enum Id : uint32_t {
        LPBandWith = kFirstOwnId,
        HPBandWith,
        Wet,
        EarlyOn,
        EarlySize,
        EarlyMix,
        InvertEarly,
        OutputGain,
        MSMix,
        SmoothTimeDelayCont
    };
    static constexpr uint32_t kParameterCount = 23;

    explicit Reverb(std::string moduleName);

    void OnSetup(float rate, uint32_t blockSize) override;
    void OnReset(bool hard) override;
    bool UpdateParameters(ProcessBlock& block) override;
    bool OnProcess(ProcessBlock& block) override;

private:
    static constexpr uint32_t kSides = 2;
    using Buffers = std::array<AlignedVector, kSides>;

    void UpdateSides();
    void UpdateEarly();

    void FillMix(const ProcessBlock& block);
    void UpdateFilters(const ProcessBlock& block);
    void FilterInput(const ProcessBlock& block);
    void RunEarly(uint32_t count);
    void RunPlate(const ProcessBlock& block);
    void Mix(const ProcessBlock& block);

    // Coefficients.
    float sampleRate = 0.0f;
    float lowPassHz = 0.0f, highPassHz = 0.0f;
    OnePole lowPass, highPass;
    float sideGain = 0.0f, midGain = 0.0f;
    float outputGain = 1.0f;  ///< linear
    bool earlyOn = false;
    float earlyMix = 0.0f;

    // State.
    std::array<float, kSides> lowPassState{}, highPassState{};
    EarlyReflections early;
    SmootherInterpLPF wetSmoother{0.002};   // one tick a sample
    SmootherLPF earlyMixSmoother{0.002};    // one tick a block
    SmootherLPF outputGainSmoother{0.002};  // decibels, one tick a block
    SmootherLPF earlySizeSmoother{0.5};     // one tick a sample
    SmootherLPF msSmoother{0.05};           // one tick a block

    // Buffers of one block.
    AlignedVector wetGain, dryGain, monoFeed;
    Buffers plate, reflections, filtered;
};

}  // namespace Quorvan::dsp

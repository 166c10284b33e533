#pragma once

#include <array>
#include <cstdint>
#include <string>

#include "effects/DattorroTank.h"
#include "framework/UnitModule.h"
#include "primitives/AlignedVector.h"
#include "primitives/DelayLine.h"
#include "primitives/SmootherLPF.h"

namespace Quorvan::dsp {

/// Plate reverberator: a predelay and a tank in the shape of an eight, with slowly moving
/// all-passes against metallic tails.
///
/// Inputs      0 audio, mono; 1 to 4 modulation rows of Decay, E_Size, Predelay and Damping;
///             5 a row that moves the size itself by a tenth of its first sample. All are read once
///             a block.
/// Outputs     0, 1 audio, wet alone, in place allowed
/// Parameters  0 Predelay 0..0.2 s: glides, below one sample none
///             1 E_Id1, 2 E_Id2 0..1: gains of the input diffusers
///             3 Decay 0..0.925: gain of the feedback paths, glides in 50 ms
///             4 E_Dd1, 5 E_Dd2 0..1: gains of the branches' all-passes, moving and standing ones
///             6 Damping 0..1: low-pass of the branches, 0 none; as a coefficient at 29761 Hz
///             7 E_Excursion 0..1 ms: how far the moving all-passes move
///             8 E_MKFosc 0..1 Hz: rate of the left oscillator; 9 E_MDFosc 0..1: the right one is
///               slower by this fraction
///             10 E_Size 0.1..1.9: scale of all lengths, glides
///             11 SmoothTimeDelay 0..1 s: time of the size's glide; the predelay takes half of it
///             12 Freeze: above 0.5 the tail stays and nothing comes in
///             13 InterpType: not in use
/// Latency     none reported
/// Method      J. Dattorro, Effect Design, part 1, J. Audio Eng. Soc. 45 (1997), with lengths for
///             29761 Hz. While the size rests all lengths are whole samples.
class DattorroCore final : public UnitModule {
public:
    enum Id : uint32_t {
        Predelay,
        InputDiffusion1,
        InputDiffusion2,
        Decay,
        DecayDiffusion1,
        DecayDiffusion2,
        Damping,
        Excursion,
        OscillatorRate,
        OscillatorSpread,
        Size,
        SmoothTimeDelay,
        Freeze,
        InterpType
    };
    /// Ids that a container gives it; InterpType stands behind them.
    static constexpr uint32_t kParameterCount = 13;

    explicit DattorroCore(std::string moduleName);

    void OnSetup(float rate, uint32_t blockSize) override;
    void OnReset(bool hard) override;
    bool UpdateParameters(ProcessBlock& block) override;
    bool OnProcess(ProcessBlock& block) override;

private:
    static constexpr uint32_t kSides = DattorroTank::kSides;

    void UpdateDiffusion();
    void UpdateExcursion();
    void UpdateOscillators();
    void UpdateGlideTimes();
    float SizeWithin(float wanted) const;
    float DampingCoefficient(float damping) const;

    void Modulate(uint32_t count);
    void HoldModulation();
    void TakeInput(const ProcessBlock& block);
    void AimGlides(const ProcessBlock& block);
    void RunPredelay(uint32_t count);
    void RunTank(const ProcessBlock& block);

    // Coefficients.
    uint32_t blockFrames = 0;
    float sampleRate = 0.0f;
    float sizeMin = 0.0f, sizeMax = 0.0f;
    float damp = 0.0f;              ///< coefficient of the low-passes, 0 none
    float excursionSamples = 0.0f;  ///< peak of the modulation
    bool frozen = false;
    std::array<float, kSides> steps{};  ///< of the oscillators, radians a sample

    // State.
    DattorroTank tank;
    DelayLine predelayLine;
    std::array<float, kSides> phases{};  ///< of the oscillators, radians
    SmootherLPF predelaySmoother{0.5};   // samples, two ticks a sample
    SmootherLPF decaySmoother{0.05};     // one tick a sample
    SmootherLPF sizeSmoother{0.5};       // one tick a sample

    // Buffers of one block.
    AlignedVector decay, predelay, input, predelayed, sizes;
    std::array<AlignedVector, kSides> modulation;  ///< samples; the last entry outlives the block
};

}  // namespace Quorvan::dsp

#pragma once

#include <cstdint>
#include <string>

#include "effects/Chorus.h"
#include "effects/CompensatedMultiDist.h"
#include "effects/Compressor.h"
#include "effects/Delay.h"
#include "effects/Flanger.h"
#include "effects/MultiModeFilter.h"
#include "effects/OctaverDelay.h"
#include "effects/Reverb.h"
#include "effects/SpaceEchoLite.h"
#include "slots/ModuleVariant.h"
#include "slots/PassThrough.h"
#include "slots/WithDryWet.h"

namespace Quorvan::Processor {

using Distortion = engine::WithDryWet<CompensatedMultiDist, 0, 2, 0>;
using FxVariantBase =
    engine::ModuleVariant<2, 2, PassThrough, dsp::MultiModeFilter, Distortion, dsp::Compressor,
                          dsp::Delay, dsp::OctaverDelay, dsp::SpaceEchoLite, dsp::Chorus,
                          dsp::Flanger, dsp::Reverb>;

/// Effect slot of the processor: ten effects, tuned for use in a slot, of which one runs, with one
/// dry/wet for all.
///
/// Inputs      0, 1 audio; 2 to 49 the modulation rows of the effects, in their order
/// Outputs     0, 1 audio
/// Parameters  0 to 160 those of the effects, 161 to 165 those of ModuleVariant
///             166 DryWetInternal 0..1: its position goes to the dry/wet of every effect
///             167 Delay_RateType, 168 OctaverDelay_DelayTimeType, 169 Flanger_Chorus_RateType
///             0 free, 1 straight, 2 triplet, 3 dotted: the sync parameters of that effect
/// Switching   takes effect in the next block, with the state that the effect was left in. The
///             fades of ModuleVariant are not in use here.
class FxVariant final : public FxVariantBase {
public:
    /// Values of ModuleType, and places among the children.
    enum Effect : uint32_t {
        kPassThrough,
        kMultiModeFilter,
        kDistortion,
        kCompressor,
        kDelay,
        kOctaverDelay,
        kTapeEcho,
        kChorus,
        kFlanger,
        kReverb
    };
    /// Own parameters behind those of ModuleVariant.
    enum FxId : uint32_t {
        DryWetInternal = kFirstDerivedId,
        DelayRateType,
        OctaverDelayTimeType,
        FlangerChorusRateType
    };
    static constexpr uint32_t kParameterCount = 170;

    explicit FxVariant(std::string moduleName);

    bool UpdateParameters(dsp::ProcessBlock& block) override;
    bool SetParameterNormalized(uint32_t id, float position) override {
        mixHolds = false;
        return FxVariantBase::SetParameterNormalized(id, position);
    }
    bool SetParameterValue(uint32_t id, float value) override {
        mixHolds = false;
        return FxVariantBase::SetParameterValue(id, value);
    }
    /// Writes "DryWetInternal", and with it nine effects, unless all of them have it already.
    void SetMix(float value);
    /// Whether the next block's outputs will be its inputs.
    bool IsEmpty() { return GetActiveIndex() == kPassThrough && !IsOn(Bypass) && !IsFading(); }
    /// What Process does of a block of an empty slot, but for the outputs.
    void ProcessEmpty(dsp::ProcessBlock& block);

private:
    void LinkDryWets();
    void TuneFilter();
    void TuneDistortion();
    void TuneCompressor();
    void TuneDelay();
    void TuneOctaverDelay();
    void TuneTapeEcho();
    void TuneChorus();
    void TuneFlanger();
    void TuneReverb();

    float mix = 0.0f;
    bool mixHolds = false;  ///< the slot's parameters have not been written since mix was
};

}  // namespace Quorvan::Processor

#include "slots/FxVariant.h"

#include <tuple>
#include <utility>

#include "framework/ParameterTable.h"

namespace Quorvan::Processor {

namespace {

namespace Kind = dsp::PotardKind;

const dsp::ParameterTable& Table() {
    using P = dsp::ParameterSpec;
    static const dsp::ParameterTable table = {
        P::Raw("DryWetInternal"),
        P::Stepped("Delay_RateType", 4),
        P::Stepped("OctaverDelay_DelayTimeType", 4),
        P::Stepped("Flanger_Chorus_RateType", 4),
    };
    return table;
}

/// Gives a parameter of an effect a new form and a start away from its bottom.
template <class M>
void ConfigureAt(M& module, uint32_t id, uint32_t kind, float min, float max, float curve,
                 float value) {
    module.Configure(id, kind, min, max, curve);
    module.SetParameterValue(id, value);
}

/// Splits a selector (0 free, then the three kinds of synced note) into the two parameters that an
/// effect has for it.
template <class M>
void WriteRateType(M& module, uint32_t syncId, uint32_t typeId, int32_t selected) {
    module.SetParameterValue(syncId, selected != 0 ? 1.0f : 0.0f);
    module.SetParameterValue(typeId, selected != 0 ? static_cast<float>(selected - 1) : 0.0f);
}

}  // namespace

FxVariant::FxVariant(std::string moduleName)
    : FxVariantBase(std::move(moduleName), kParameterCount, std::tuple(""),
                    std::tuple("MultiModeFilter"), std::tuple(""), std::tuple("Compressor"),
                    std::tuple("Delay"), std::tuple("OctaverDelay"), std::tuple("TapeEcho"),
                    std::tuple("Chorus"), std::tuple("Flanger"), std::tuple("Reverb")) {
    AppendParameters(Table());
    SetParameterNormalized(CopyOnBypass, 1.0f);
    LinkDryWets();
    TuneFilter();
    TuneDistortion();
    TuneCompressor();
    TuneDelay();
    TuneOctaverDelay();
    TuneTapeEcho();
    TuneChorus();
    TuneFlanger();
    TuneReverb();
}

bool FxVariant::UpdateParameters(dsp::ProcessBlock&) {
    if (IsChanged(DelayRateType))
        WriteRateType(Child<kDelay>(), dsp::Delay::MidiSync, dsp::Delay::RateSyncedType,
                      Index(DelayRateType));
    if (IsChanged(OctaverDelayTimeType))
        WriteRateType(Child<kOctaverDelay>(), dsp::OctaverDelay::MidiSync,
                      dsp::OctaverDelay::RateSyncedType, Index(OctaverDelayTimeType));
    if (IsChanged(FlangerChorusRateType))
        WriteRateType(Child<kFlanger>().Child<0>(), dsp::Chorus::MidiSync,
                      dsp::Chorus::RateSyncedType, Index(FlangerChorusRateType));
    return true;
}

void FxVariant::SetMix(float value) {
    if (mixHolds && value == mix)
        return;
    SetParameterValue(DryWetInternal, value);
    mix = value;
    mixHolds = true;
}

void FxVariant::ProcessEmpty(dsp::ProcessBlock& block) {
    UpdateParameters(block);
    needsFullUpdate = false;
    ClearChanged();
}

void FxVariant::LinkDryWets() {
    const auto link = [this](Effect effect, uint32_t id) {
        Link(DryWetInternal, kOffsets[effect] + id);
    };
    link(kMultiModeFilter, dsp::MultiModeFilter::Wet);
    link(kDistortion, Distortion::DryWet);
    link(kCompressor, dsp::Compressor::Wet);
    link(kDelay, dsp::Delay::Wet);
    link(kOctaverDelay, dsp::OctaverDelay::DryWet);
    link(kTapeEcho, dsp::SpaceEchoLite::DryWet);
    link(kChorus, dsp::Chorus::DryWet);
    link(kFlanger, dsp::Chorus::DryWet);
    link(kReverb, dsp::Reverb::Wet);
}

void FxVariant::TuneFilter() {
    using F = dsp::MultiModeFilter;
    F& filter = Child<kMultiModeFilter>();
    filter.Configure(F::Freq, Kind::kExponential, 20.0f, 20000.0f, 6.0f);
    filter.Configure(F::CombFreq, Kind::kExponential, 20.0f, 2000.0f, 6.0f);
    filter.Configure(F::Q, Kind::kExponential, 0.5f, 15.0f, 5.0f);
    filter.ConfigureStepped(F::Slope, 3, 12.0f, 12.0f);
    filter.SetParameterValue(F::Slope, 12.0f);
}

void FxVariant::TuneDistortion() {
    CompensatedMultiDist& distortion = Child<kDistortion>().Child<0>();
    dsp::MultiDist& shaper = distortion.Child<0>();
    shaper.SetParameterNormalized(dsp::MultiDist::Stereo, 1.0f);
    shaper.Configure(dsp::MultiDist::Drive, Kind::kLinear, 0.0f, 48.0f);
    distortion.SetParameterValue(CompensatedMultiDist::InGainCompensated, -12.0f);
}

void FxVariant::TuneCompressor() {
    using C = dsp::Compressor;
    C& compressor = Child<kCompressor>();
    compressor.Configure(C::Threshold, Kind::kLinear, -60.0f, 20.0f);
    compressor.Configure(C::Ratio, Kind::kExponential, 1.0f, 100.0f, 9.0f);
    compressor.Configure(C::Attack, Kind::kExponential, 0.01f, 1000.0f, 10.0f);
    compressor.Configure(C::Release, Kind::kExponential, 1.0f, 2000.0f, 3.0f);
    compressor.Configure(C::OutputGain, Kind::kBipolarExp, -36.0f, 36.0f, 2.0f);
    compressor.SetParameterValue(C::InGainCompensated, 20.0f);
}

void FxVariant::TuneDelay() {
    using D = dsp::Delay;
    D& delay = Child<kDelay>();
    delay.Configure(D::DelayTimeMs, Kind::kExponential, 2.0f, 2000.0f, 3.0f);
    ConfigureAt(delay, D::HPFreq, Kind::kExponential, 20.0f, 10000.0f, 6.0f, 150.0f);
    delay.Configure(D::LPFreq, Kind::kExponential, 250.0f, 20000.0f, 6.0f);
    delay.SetParameterNormalized(D::LPFreq, 1.0f);
    delay.Configure(D::StereoWidth, Kind::kLinear, 0.0f, 0.2f);
    delay.Configure(D::Wet, Kind::kBipolarExp, 0.0f, 1.0f, -2.0f);
    delay.Configure(D::DelayFineMs, Kind::kBipolarPolynomial, -50.0f, 50.0f, 3.0f);
}

void FxVariant::TuneOctaverDelay() {
    using O = dsp::OctaverDelay;
    O& octaver = Child<kOctaverDelay>();
    octaver.Configure(O::DelayTimeMs, Kind::kExponential, 16.0f, 2000.0f, 3.0f);
    octaver.SetParameterNormalized(O::LPFreq, 1.0f);
    octaver.SetParameterValue(O::HPFreq, 150.0f);
}

void FxVariant::TuneTapeEcho() {
    using E = dsp::SpaceEchoLite;
    E& echo = Child<kTapeEcho>();
    echo.SetParameterValue(E::HPFreq, 150.0f);
    echo.SetParameterValue(E::ConfInGainCompensated, -24.3f);
}

void FxVariant::TuneChorus() {
    using C = dsp::Chorus;
    C& chorus = Child<kChorus>();
    chorus.Configure(C::DelayMs, Kind::kLinear, 0.6f, 20.0f);
    chorus.Configure(C::Depth, Kind::kLinear, 0.0f, 10.0f);
    chorus.Configure(C::Freq, Kind::kExponential, 0.1f, 5.0f, 1.0f);
    chorus.Configure(C::Feedback, Kind::kLinear, 0.0f, 0.9f);
    ConfigureAt(chorus, C::LPFfc, Kind::kLinear, 20.0f, 20000.0f, 0.5f, 10000.0f);
    chorus.ConfigureStepped(C::Voices, 3, 1.0f);
    chorus.SetParameterValue(C::Voices, 1.0f);
    chorus.SetParameterNormalized(C::LPFOn, 1.0f);
    chorus.SetParameterNormalized(C::HPFOn, 0.0f);
}

void FxVariant::TuneFlanger() {
    using C = dsp::Chorus;
    dsp::Flanger& flanger = Child<kFlanger>();
    flanger.Configure(dsp::Flanger::MinDelay, Kind::kLinear, 0.001f, 10.0f);
    flanger.Configure(dsp::Flanger::DepthFlanger, Kind::kLinear, 0.0f, 10.0f);
    C& chorus = flanger.Child<0>();
    chorus.Configure(C::Feedback, Kind::kExponential, 0.0f, 0.99f, -1.0f);
    chorus.Configure(C::Freq, Kind::kExponential, 0.005f, 10.0f, 3.0f);
    ConfigureAt(chorus, C::LPFfc, Kind::kExponential, 1000.0f, 20000.0f, 4.0f, 9935.0f);
    ConfigureAt(chorus, C::HPFfc, Kind::kExponential, 30.0f, 800.0f, 4.0f, 125.0f);
}

void FxVariant::TuneReverb() {
    using R = dsp::Reverb;
    R& reverb = Child<kReverb>();
    dsp::DattorroCore& core = reverb.Child<0>();
    core.Configure(dsp::DattorroCore::Predelay, Kind::kExponential, 0.0f, 0.2f, 3.0f);
    core.Configure(dsp::DattorroCore::Size, Kind::kLinear, 0.1f, 1.9f);
    core.Configure(dsp::DattorroCore::Decay, Kind::kLinear, 0.0f, 0.925f);
    ConfigureAt(reverb, R::LPBandWith, Kind::kExponential, 100.0f, 20000.0f, 6.0f, 15000.0f);
    ConfigureAt(reverb, R::HPBandWith, Kind::kExponential, 30.0f, 10000.0f, 6.0f, 200.0f);
    reverb.Configure(R::Wet, Kind::kBipolarExp, 0.0f, 1.0f, -3.0f);
}

}  // namespace Quorvan::Processor

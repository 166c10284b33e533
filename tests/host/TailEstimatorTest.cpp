#include "host/engine/TailEstimator.h"

#include "host/HostRig.h"
#include "host/parameters/ModulationNames.h"
#include "host/parameters/ShellIndex.h"
#include "host/state/PresetFormat.h"
#include "host/state/StateTransfer.h"
#include "presets/FactoryPresets.h"

namespace Quorvan::Host {
namespace {

Preset With(const std::string& more) {
    Preset preset;
    preset.parameters = AudibleSettings(more);
    return preset;
}

struct Applied : ReadyEngine {
    explicit Applied(const Preset& preset, double rate = 44100.0) : ReadyEngine({}, {rate}) {
        SetTransport({preset.tempo.value_or(120.0), 0.0, true});
        ApplyPreset(preset, *this, Catalog());
    }
};

Tail TailOf(const Preset& preset) {
    Applied engine(preset);
    return EstimateTail(engine, Catalog());
}

/// Seconds after the end of a second of noise at which the last sound above -90 dB stands.
double MeasuredTail(const Preset& preset, double seconds, double rate) {
    Applied engine(preset, rate);
    const auto second = static_cast<size_t>(rate);
    StereoSignal input = NoiseInput(second);
    for (Signal& channel : input)
        channel.resize(second + static_cast<size_t>(seconds * rate), 0.0f);
    const StereoSignal output = engine.Run(input, 4096);
    size_t last = output[0].size() - 1;
    while (last > 0 && std::max(std::abs(output[0][last]), std::abs(output[1][last])) <= 3.162e-5f)
        --last;
    return (static_cast<double>(last) - engine.LatencyFrames()) / rate - 1.0;
}

TEST(TailEstimatorTest, TailsLastAsLongAsTheSoundAndNotForAges) {
    for (const std::string settings :
         {"", "MoteWeaver_GrainSizeAbsolute=900 ms",
          "MoteWeaver_PlaybackMode=Scan;MoteWeaver_Speed=1 x",
          "MoteWeaver_BufferLengthSynced=1/8;MoteWeaver_BufferPersistence=60 %",
          "FX1_ModuleType=Delay;FX1_Dry / Wet=50 %;FX1_Delay_Feedback=60 %;"
          "FX1_Delay_DelayTimeMs=300 ms;FX1_Delay_DelayFineMs=50 ms",
          "FX1_ModuleType=Tape Echo;FX1_Dry / Wet=50 %;FX1_TapeEcho_Intensity=70 %;"
          "FX1_TapeEcho_DelayTime=200 ms",
          "FX1_ModuleType=Filter;FX1_Dry / Wet=50 %;FX1_MultiModeFilter_Mode=Comb Feedback;"
          "FX1_MultiModeFilter_CombFreq=30 Hz;FX1_MultiModeFilter_Q=12",
          "FX2_ModuleType=Reverb;FX2_Dry / Wet=50 %;FX2_Reverb_Decay=60 %;FX2_Reverb_E_Dd1=90 %"}) {
        const Preset preset = With(settings);
        const Tail tail = TailOf(preset);
        const double measured = MeasuredTail(preset, 9.0, 16000.0);
        EXPECT_FALSE(tail.endless) << settings;
        EXPECT_GE(tail.seconds, measured) << settings;
        EXPECT_LE(tail.seconds, 4.0 * measured + 2.0) << settings;
    }
}

TEST(TailEstimatorTest, NoFactoryPresetSoundsLongerThanItSays) {
    for (const FactoryPreset& factory : FactoryPresets()) {
        const Preset preset = ReadPreset(factory.json, Catalog()).value.value();
        const Tail tail = TailOf(preset);
        const double listened = tail.endless ? 0.0 : std::min(tail.seconds + 1.0, 70.0);
        EXPECT_TRUE(tail.endless || MeasuredTail(preset, listened, 16000.0) <= tail.seconds)
            << factory.id;
    }
}

TEST(TailEstimatorTest, WhatHoldsOrFeedsItselfIsEndless) {
    EXPECT_TRUE(std::isinf(TailOf(With("MoteWeaver_BufferFreeze=On")).memory));
    for (const char* settings :
         {"MoteWeaver_BufferFreeze=On", "Feedback=0 dB",
          "Feedback=-30 dB;FX1_Position=Feedback Loop;FX1_ModuleType=Compressor;FX1_Dry / Wet=50 "
          "%;FX1_Compressor_OutputGain=20 dB",
          "Feedback=-30 dB;FX1_Position=Feedback Loop;FX1_ModuleType=Distortion;FX1_Dry / Wet=50 "
          "%;FX1_MultiDist_Drive=12 dB",
          "FX1_ModuleType=Reverb;FX1_Dry / Wet=20 %;FX1_Reverb_Freeze=On",
          "FX1_ModuleType=Tape Echo;FX1_Dry / Wet=50 %;FX1_TapeEcho_Intensity=100 %"}) {
        EXPECT_TRUE(TailOf(With(settings)).endless) << settings;
        EXPECT_EQ(TailOf(With(settings)).seconds, kEndlessTail);
    }
    EXPECT_FALSE(TailOf(With("Feedback=-30 dB")).endless);
    EXPECT_FALSE(TailOf(With("FX1_Reverb_Freeze=On")).endless) << "not in the slot";
    EXPECT_FALSE(TailOf(With("Dry / Wet=0 %;Feedback=0 dB")).endless) << "not heard";
}

TEST(TailEstimatorTest, ModulationCountsAsFarAsItReaches) {
    Preset preset = With("");
    preset.routings = {{1, *FindDestination("Freeze"), 0.3f}};
    EXPECT_FALSE(TailOf(preset).endless);
    preset.routings.push_back({5, *FindDestination("Freeze"), -0.3f});
    EXPECT_TRUE(TailOf(preset).endless);
}

TEST(TailEstimatorTest, BypassHasNoTail) {
    ReadyEngine engine({{kBypassIndex, 1.0f}, {IndexOf("MoteWeaver_BufferFreeze"), 1.0f}});
    const Tail tail = EstimateTail(engine, Catalog());
    EXPECT_EQ(tail.seconds, 0.0);
    EXPECT_FALSE(tail.endless);
}

}  // namespace
}  // namespace Quorvan::Host

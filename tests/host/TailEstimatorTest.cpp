#include "host/engine/TailEstimator.h"

#include <gtest/gtest.h>

#include "host/HostRig.h"
#include "host/parameters/ModulationNames.h"
#include "host/parameters/ShellIndex.h"
#include "host/state/StateTransfer.h"

namespace Quorvan::Host {
namespace {

using namespace test;

Preset With(const std::string& more) {
    Preset preset;
    preset.parameters = AudibleSettings(more);
    return preset;
}

/// An engine with a preset in force.
struct Applied : ReadyEngine {
    explicit Applied(const Preset& preset) { ApplyPreset(preset, *this, Catalog()); }
};

Tail TailOf(const Preset& preset) {
    Applied engine(preset);
    return EstimateTail(engine, Catalog());
}

/// Seconds after the end of a second of noise at which the last sound above -60 dB stands.
double MeasuredTail(const Preset& preset) {
    Applied engine(preset);
    StereoSignal input = NoiseInput(44100);
    for (Signal& channel : input)
        channel.resize(44100 * 8, 0.0f);
    const StereoSignal output = engine.Run(input, 4096);
    size_t last = output[0].size() - 1;
    while (last > 0 && std::abs(output[0][last]) <= 0.0003f && std::abs(output[1][last]) <= 0.0003f)
        --last;
    return (static_cast<double>(last) - 44100.0 - engine.LatencyFrames()) / 44100.0;
}

TEST(TailEstimatorTest, TailsLastAsLongAsTheSoundAndNotForAges) {
    for (const std::string settings :
         {"", "MoteWeaver_GrainSizeAbsolute=900 ms",
          "MoteWeaver_PlaybackMode=Scan;MoteWeaver_Speed=1 x",
          "MoteWeaver_BufferLengthSynced=1/8;MoteWeaver_BufferPersistence=60 %",
          "FX1_ModuleType=Delay;FX1_Dry / Wet=50 %;FX1_Delay_Feedback=60 %;"
          "FX1_Delay_DelayTimeMs=300 ms",
          "FX2_ModuleType=Reverb;FX2_Dry / Wet=50 %;FX2_Reverb_Decay=60 %"}) {
        const Preset preset = With(settings);
        const Tail tail = TailOf(preset);
        const double measured = MeasuredTail(preset);
        EXPECT_FALSE(tail.endless) << settings;
        EXPECT_GE(tail.seconds, measured) << settings;
        EXPECT_LE(tail.seconds, 3.0 * measured + 1.0) << settings;
    }
}

TEST(TailEstimatorTest, WhatHoldsOrFeedsItselfIsEndless) {
    EXPECT_TRUE(TailOf(With("MoteWeaver_BufferFreeze=On")).endless);
    EXPECT_TRUE(TailOf(With("Feedback=0 dB")).endless);
    EXPECT_FALSE(TailOf(With("Feedback=-30 dB")).endless);
    EXPECT_TRUE(
        TailOf(With("FX1_ModuleType=Reverb;FX1_Dry / Wet=20 %;FX1_Reverb_Freeze=On")).endless);
    EXPECT_FALSE(TailOf(With("FX1_Reverb_Freeze=On")).endless) << "not in the slot";
    const Tail echo =
        TailOf(With("FX1_ModuleType=Tape Echo;FX1_Dry / Wet=50 %;FX1_TapeEcho_Intensity=115 %"));
    EXPECT_TRUE(echo.endless);
    EXPECT_EQ(echo.seconds, kEndlessTail);
}

TEST(TailEstimatorTest, ModulationCountsAsFarAsItReaches) {
    Preset preset = With("");
    preset.routings = {{1, *FindDestination("Freeze"), 0.3f}};
    EXPECT_FALSE(TailOf(preset).endless);
    preset.routings.push_back({5, *FindDestination("Freeze"), -0.3f});
    EXPECT_TRUE(TailOf(preset).endless);
    EXPECT_LE(
        TailOf(With("MoteWeaver_BufferLengthSynced=4/1;MoteWeaver_BufferPersistence=80 %")).seconds,
        kLongestTail);
}

TEST(TailEstimatorTest, BypassHasNoTail) {
    ReadyEngine engine({{kBypassIndex, 1.0f}, {IndexOf("MoteWeaver_BufferFreeze"), 1.0f}});
    const Tail tail = EstimateTail(engine, Catalog());
    EXPECT_EQ(tail.seconds, 0.0);
    EXPECT_FALSE(tail.endless);
}

}  // namespace
}  // namespace Quorvan::Host

#include "host/engine/TailEstimator.h"

#include <gtest/gtest.h>

#include "host/HostRig.h"
#include "host/parameters/ModulationNames.h"
#include "host/parameters/ShellIndex.h"
#include "host/state/StateTransfer.h"

namespace Quorvan::Host {
namespace {

using namespace test;

Preset With(std::vector<ParameterValue> more) {
    Preset preset;
    preset.parameters = AudibleSettings();
    preset.parameters.insert(preset.parameters.end(), more.begin(), more.end());
    return preset;
}

Tail TailOf(const Preset& preset) {
    Engine engine(1);
    engine.Prepare({});
    ApplyPreset(preset, engine, Catalog());
    return EstimateTail(engine, Catalog());
}

/// Seconds after the end of a second of noise at which the last sound above -60 dB stands.
double MeasuredTail(const Preset& preset) {
    Engine engine(1);
    engine.Prepare({});
    ApplyPreset(preset, engine, Catalog());
    StereoSignal input = NoiseInput(44100);
    for (Signal& channel : input)
        channel.resize(44100 * 8, 0.0f);
    const StereoSignal output = HostStream(engine).Run(input, 4096);
    size_t last = 0;
    for (size_t i = 0; i < output[0].size(); ++i) {
        if (std::abs(output[0][i]) > 0.0003f || std::abs(output[1][i]) > 0.0003f)
            last = i;
    }
    return (static_cast<double>(last) - 44100.0 - engine.LatencyFrames()) / 44100.0;
}

TEST(TailEstimatorTest, TailsLastAsLongAsTheSoundAndNotForAges) {
    const std::vector<std::pair<const char*, Preset>> sounds{
        {"grains", With({})},
        {"long grains", With({Set("MoteWeaver_GrainSizeAbsolute", "900 ms")})},
        {"scanned tape",
         With({Set("MoteWeaver_PlaybackMode", "Scan"), Set("MoteWeaver_Speed", "1 x")})},
        {"persistence", With({Set("MoteWeaver_BufferLengthSynced", "1/8"),
                              Set("MoteWeaver_BufferPersistence", "60 %")})},
        {"delay",
         With({Set("FX1_ModuleType", "Delay"), Set("FX1_Dry / Wet", "50 %"),
               Set("FX1_Delay_DelayTimeMs", "300 ms"), Set("FX1_Delay_Feedback", "60 %")})},
        {"reverb", With({Set("FX2_ModuleType", "Reverb"), Set("FX2_Dry / Wet", "50 %"),
                         Set("FX2_Reverb_Decay", "60 %")})}};
    for (const auto& [name, preset] : sounds) {
        const Tail tail = TailOf(preset);
        const double measured = MeasuredTail(preset);
        EXPECT_FALSE(tail.endless) << name;
        EXPECT_GE(tail.seconds, measured) << name;
        EXPECT_LE(tail.seconds, 3.0 * measured + 1.0) << name;
    }
}

TEST(TailEstimatorTest, WhatHoldsOrFeedsItselfIsEndless) {
    EXPECT_TRUE(TailOf(With({Set("MoteWeaver_BufferFreeze", "On")})).endless);
    EXPECT_TRUE(TailOf(With({Set("Feedback", "0 dB")})).endless);
    EXPECT_FALSE(TailOf(With({Set("Feedback", "-30 dB")})).endless);
    EXPECT_TRUE(TailOf(With({Set("FX1_ModuleType", "Reverb"), Set("FX1_Dry / Wet", "20 %"),
                             Set("FX1_Reverb_Freeze", "On")}))
                    .endless);
    EXPECT_FALSE(TailOf(With({Set("FX1_Reverb_Freeze", "On")})).endless) << "not in the slot";
    const Tail echo = TailOf(With({Set("FX1_ModuleType", "Tape Echo"), Set("FX1_Dry / Wet", "50 %"),
                                   Set("FX1_TapeEcho_Intensity", "115 %")}));
    EXPECT_TRUE(echo.endless);
    EXPECT_EQ(echo.seconds, kEndlessTail);
}

TEST(TailEstimatorTest, ModulationCountsAsFarAsItReaches) {
    Preset preset = With({});
    preset.routings = {{1, *FindDestination("Freeze"), 0.3f}};
    EXPECT_FALSE(TailOf(preset).endless);
    preset.routings.push_back({5, *FindDestination("Freeze"), -0.3f});
    EXPECT_TRUE(TailOf(preset).endless);
    EXPECT_LE(TailOf(With({Set("MoteWeaver_BufferLengthSynced", "4/1"),
                           Set("MoteWeaver_BufferPersistence", "80 %")}))
                  .seconds,
              kLongestTail);
}

TEST(TailEstimatorTest, BypassHasNoTail) {
    Engine engine(1);
    engine.Prepare({});
    ApplyState({{{kBypassIndex, 1.0f}, {IndexOf("MoteWeaver_BufferFreeze"), 1.0f}}}, engine,
               Catalog());
    const Tail tail = EstimateTail(engine, Catalog());
    EXPECT_EQ(tail.seconds, 0.0);
    EXPECT_FALSE(tail.endless);
}

}  // namespace
}  // namespace Quorvan::Host

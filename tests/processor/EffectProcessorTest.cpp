// Bypass, output gain, panic, preset loading and the change lists.
#include <gtest/gtest.h>

#include <cmath>

#include "support/ProcessorRig.h"
#include "support/TestSignals.h"

namespace Quorvan::Processor {
namespace {

using test::Channel;
using test::ProcessorRig;
using test::Stereo;

Stereo NoisePair(size_t length, float amplitude = 0.25f) {
    return {test::Noise(1, length, amplitude), test::Noise(2, length, amplitude)};
}

float Peak(const Channel& channel, size_t from = 0) {
    float peak = 0.0f;
    for (size_t i = from; i < channel.size(); ++i)
        peak = std::max(peak, std::abs(channel[i]));
    return peak;
}

TEST(EffectProcessorTest, BypassCrossfadesInTenMillisecondsAndPassesTheInputUntouched) {
    ProcessorRig rig;
    rig.Set("OutputGain", 0.0f);  // it doesn't act on the bypass
    const Stereo in = NoisePair(4800);
    rig.Run(in);
    rig.Set("Bypass", 1.0f);
    const Stereo out = rig.Run(in);
    // The effect is silent, its gains at their bottoms, so that the crossfade shows as a ramp.
    for (size_t i = 0; i < 480; ++i) {
        const float ramp = static_cast<float>(i + 1) / 480.0f;
        EXPECT_NEAR(out[0][i], ramp * in[0][i], 2e-4f) << i;
    }
    for (size_t i = 480; i < in[0].size(); ++i) {
        ASSERT_EQ(out[0][i], in[0][i]) << i;
        ASSERT_EQ(out[1][i], in[1][i]) << i;
    }
}

uint64_t WritePosition(ProcessorRig& rig) {
    uint64_t record[9] = {};
    uint32_t size = sizeof(record);
    rig.processor->GetParameterBlob(136, reinterpret_cast<uint8_t*>(record), &size);
    return record[2];
}

TEST(EffectProcessorTest, TheEffectStandsStillInABypassAtRest) {
    ProcessorRig rig;
    rig.Set("Bypass", 1.0f);
    rig.RunSilence(20);
    const uint64_t head = WritePosition(rig);
    EXPECT_EQ(head, 480u);  // it ran as long as the crossfade did
    rig.RunSilence(7);
    EXPECT_EQ(WritePosition(rig), head);
    rig.Set("Bypass", 0.0f);
    rig.RunSilence(1);
    EXPECT_EQ(WritePosition(rig), head + rig.blockSize);
}

TEST(EffectProcessorTest, OutputGainGlidesToItsLevel) {
    ProcessorRig rig;
    rig.Set({{"Master Volume", 1.0f}, {"OutputGain", 0.0f}});
    const Stereo in{Channel(48000, 0.5f), Channel(48000, 0.5f)};
    const Stereo out = rig.Run(in);  // full dry: the input comes through
    EXPECT_NEAR(out[0].back(), 0.5f * std::pow(10.0f, -12.0f / 20.0f), 1e-5f);
    EXPECT_GT(out[0][480], 0.3f);
}

TEST(EffectProcessorTest, PanicClearsOnceAndOnlyUpwards) {
    ProcessorRig rig;
    rig.MakeAudible();
    const Stereo in = NoisePair(48000);
    rig.Run(in);
    EXPECT_GT(Peak(rig.RunSilence(10)[0]), 0.01f);
    rig.Set("Panic", 1.0f);
    const Stereo cleared = rig.RunSilence(200);
    EXPECT_LT(Peak(cleared[0], 500), 1e-6f);
    rig.Run(in);
    const uint64_t head = WritePosition(rig);
    for (const float again : {1.0f, 0.0f}) {  // the same value, and back: nothing happens
        rig.Set("Panic", again);
        rig.RunSilence(1);
    }
    EXPECT_EQ(WritePosition(rig), head + 2 * rig.blockSize);
}

TEST(EffectProcessorTest, TheEndOfAPresetLoadResetsTheSoundAndKeepsTheParameters) {
    ProcessorRig rig;
    rig.MakeAudible();
    rig.Run(NoisePair(48000));
    rig.Set("PresetLoading", 1.0f);
    EXPECT_GT(Peak(rig.RunSilence(10)[0]), 0.01f);
    rig.Set("PresetLoading", 0.0f);
    EXPECT_LT(Peak(rig.RunSilence(200)[0], 500), 1e-6f);
    EXPECT_EQ(rig.Get("MoteWeaver_GrainSizeAbsolute"), 0.4f);
}

TEST(EffectProcessorTest, NothingIsToldBeforeAPresetLoadHasEnded) {
    ProcessorRig rig;
    rig.Set("GUI Visible", 1.0f);
    const auto lower = [&rig](float upper) {
        rig.Set("FX1_Position", upper).Set("FX2_Position", 1.0f);
        rig.RunSilence(1);
    };
    lower(0.0f);
    EXPECT_TRUE(rig.TakeParameterChanges().empty());
    rig.Set("PresetLoading", 1.0f);
    lower(0.4f);
    EXPECT_TRUE(rig.TakeParameterChanges().empty());
    rig.Set("PresetLoading", 0.0f);
    lower(0.0f);
    const auto changes = rig.TakeParameterChanges();
    ASSERT_FALSE(changes.empty());
    EXPECT_EQ(changes[0].index, ProcessorRig::IndexOf("FX2_Position"));
    EXPECT_EQ(changes[0].zero, 0u);
    EXPECT_EQ(rig.Get("FX2_Position"), rig.Get("FX1_Position"));
    EXPECT_TRUE(rig.TakeParameterChanges().empty());

    ProcessorRig quick;  // up and down again between two blocks
    quick.Set("PresetLoading", 1.0f).Set("PresetLoading", 0.0f).Set("FX2_Position", 1.0f);
    quick.RunSilence(1);
    EXPECT_FALSE(quick.TakeParameterChanges().empty());
}

}  // namespace
}  // namespace Quorvan::Processor

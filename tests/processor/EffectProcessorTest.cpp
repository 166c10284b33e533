// Bypass, output gain, panic, preset loading, the change lists and the places of the slots.
#include "support/ProcessorRig.h"
#include "support/Test.h"

namespace Quorvan::Processor {
namespace {

TEST(EffectProcessorTest, BypassCrossfadesInTenMillisecondsAndPassesTheInputUntouched) {
    ProcessorRig rig;
    rig.Set("OutputGain", 0.0f);  // it doesn't act on the bypass
    const Stereo in = NoisePair(4800);
    rig.Run(in);
    rig.Set("Bypass", 1.0f);
    const Stereo out = rig.Run(in);
    // The effect is silent, its gains at their bottoms, so that the crossfade shows as a ramp.
    for (size_t c = 0; c < 2; ++c)
        for (size_t i = 0; i < in[c].size(); ++i) {
            const float ramp = static_cast<float>(i + 1) / 480.0f;
            ASSERT_NEAR(out[c][i], std::min(ramp, 1.0f) * in[c][i], i < 480 ? 2e-4f : 0.0f) << i;
        }
}

TEST(EffectProcessorTest, TheEffectStandsStillInABypassAtRest) {
    ProcessorRig rig;
    rig.Set("Bypass", 1.0f);
    rig.RunSilence(20);
    EXPECT_EQ(rig.ReadDisplay().writePosition, 480u);  // it ran as long as the crossfade did
    rig.Set("Bypass", 0.0f);
    rig.RunSilence(1);
    EXPECT_EQ(rig.ReadDisplay().writePosition, 480 + rig.blockSize);
}

TEST(EffectProcessorTest, OutputGainGlidesToItsLevel) {
    ProcessorRig rig;
    rig.SetAll("Master Volume=1;OutputGain=0");
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
    EXPECT_GT(PeakLevel(rig.RunSilence(10)[0]), 0.01f);
    rig.Set("Panic", 1.0f);
    EXPECT_LT(PeakLevel(rig.RunSilence(200)[0], 500), 1e-6f);
    rig.Run(in);
    const uint64_t head = rig.ReadDisplay().writePosition;
    for (const float again : {1.0f, 0.0f}) {  // the same value, and back: nothing happens
        rig.Set("Panic", again);
        rig.RunSilence(1);
    }
    EXPECT_EQ(rig.ReadDisplay().writePosition, head + 2 * rig.blockSize);
}

constexpr const char* kDistorts =
    "ModuleType=0.2222;Dry / Wet=1;MultiDist_DistType=0;MultiDist_Drive=1;MultiDist_Stereo=1;";
constexpr const char* kFilters = "ModuleType=0.1111;Dry / Wet=1;MultiModeFilter_Freq=0.2;";
constexpr const char *kFirst = "FX1_", *kSecond = "FX2_";
constexpr const char *kAfterMix = "Position=0", *kOnWet = "Position=0.5", *kInLoop = "Position=1";

struct Slot {
    std::string prefix, positions;
};

/// What comes out of a cloud with these slots, where dryWet and feedback are positions.
Stereo Sound(float dryWet, float feedback, const std::vector<Slot>& slots) {
    ProcessorRig rig;
    rig.MakeAudible().Set("Dry / Wet", dryWet).Set("Feedback", feedback);
    for (const Slot& slot : slots)
        rig.SetAll(slot.positions, slot.prefix);
    rig.EndPresetLoad();
    return rig.Run(NoisePair(24000));
}

TEST(SlotPlaceTest, AnEffectIsHeardOnWhatPassesItsPlaceOnly) {
    for (const float dryWet : {0.0f, 1.0f})
        for (const float feedback : {0.0f, 0.85f}) {
            const Stereo plain = Sound(dryWet, feedback, {});
            const auto isHeard = [&, dryWet, feedback](const char* place) {
                return Sound(dryWet, feedback, {{kFirst, kDistorts + std::string(place)}}) != plain;
            };
            SCOPED_TRACE(testing::Message() << dryWet << " wet, feedback " << feedback);
            EXPECT_TRUE(isHeard(kAfterMix));
            EXPECT_EQ(isHeard(kOnWet), dryWet > 0.0f);
            EXPECT_EQ(isHeard(kInLoop), dryWet > 0.0f && feedback > 0.0f);
        }
}

TEST(SlotPlaceTest, TheFirstSlotComesAheadOfTheSecond) {
    const auto sound = [](const char* first, const char* firstPlace, const char* second,
                          const char* secondPlace) {
        return Sound(1.0f, 0.5f,
                     {{kFirst, std::string(first) + firstPlace},
                      {kSecond, std::string(second) + secondPlace}});
    };
    for (const char* place : {kAfterMix, kOnWet, kInLoop})
        EXPECT_NE(sound(kDistorts, place, kFilters, place),
                  sound(kFilters, place, kDistorts, place));
    // The second one never stands ahead of the first.
    EXPECT_EQ(sound(kDistorts, kAfterMix, kFilters, kInLoop),
              sound(kDistorts, kAfterMix, kFilters, kAfterMix));
}

}  // namespace
}  // namespace Quorvan::Processor

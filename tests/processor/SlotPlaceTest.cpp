// Where in the signal path the slots stand.
#include <gtest/gtest.h>

#include "support/ProcessorRig.h"

namespace Quorvan::Processor {
namespace {

using namespace test;

constexpr const char* kDistorts =
    "ModuleType=0.2222;Dry / Wet=1;MultiDist_DistType=0;MultiDist_Drive=1;MultiDist_Stereo=1;";
constexpr const char* kFilters = "ModuleType=0.1111;Dry / Wet=1;MultiModeFilter_Freq=0.2;";
constexpr const char* kFirst = "FX1_";
constexpr const char* kSecond = "FX2_";
constexpr const char* kAfterMix = "Position=0";
constexpr const char* kOnWet = "Position=0.5";
constexpr const char* kInLoop = "Position=1";

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
    struct Case {
        float dryWet, feedback;
        bool afterMix, onWet, inLoop;  ///< whether the effect is heard there
    };
    for (const Case& c : {Case{0.0f, 0.0f, true, false, false},
                          {0.0f, 0.85f, true, false, false},
                          {1.0f, 0.0f, true, true, false},
                          {1.0f, 0.85f, true, true, true}}) {
        const Stereo plain = Sound(c.dryWet, c.feedback, {});
        const auto isHeard = [&](const char* place) {
            return Sound(c.dryWet, c.feedback, {{kFirst, kDistorts + std::string(place)}}) != plain;
        };
        SCOPED_TRACE(testing::Message() << c.dryWet << " wet, feedback " << c.feedback);
        EXPECT_EQ(isHeard(kAfterMix), c.afterMix);
        EXPECT_EQ(isHeard(kOnWet), c.onWet);
        EXPECT_EQ(isHeard(kInLoop), c.inLoop);
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

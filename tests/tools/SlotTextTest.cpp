#include "tools/render/SlotText.h"

#include <gtest/gtest.h>

#include <map>
#include <string>

#include "host/state/StateTransfer.h"

namespace Quorvan::Tools {
namespace {

/// What the picture of a sound with these settings says of its effects.
std::string TextOf(const std::map<std::string, std::string>& settings) {
    static const Host::ParameterCatalog catalog;
    Host::Preset preset;
    for (const auto& [name, text] : settings) {
        const uint32_t index = catalog.Find(name).value();
        preset.parameters.push_back({index, catalog.Position(index, text).position.value()});
    }
    Host::Engine engine(1);
    engine.Prepare({.sampleRate = 48000.0});
    Host::ApplyPreset(preset, engine, catalog);
    return SlotText(engine, catalog);
}

TEST(SlotTextTest, EffectsAreToldWithTheirPlaces) {
    EXPECT_EQ(TextOf({}), "");
    std::map<std::string, std::string> sound{{"FX1_ModuleType", "Tape Echo"},
                                             {"FX1_Position", "Feedback Loop"},
                                             {"FX1_Dry / Wet", "40 %"}};
    EXPECT_EQ(TextOf(sound), "FX1 Tape Echo in the loop");
    sound.insert({{"FX2_ModuleType", "Reverb"}, {"FX2_Dry / Wet", "20 %"}});
    EXPECT_EQ(TextOf(sound), "FX1 Tape Echo in the loop, FX2 Reverb behind the mix");
    sound["FX1_Bypass"] = "On";
    EXPECT_EQ(TextOf(sound), "FX2 Reverb behind the mix");
    sound["FX2_Position"] = "Wet Signal";
    EXPECT_EQ(TextOf(sound), "FX2 Reverb on the wet signal");
    sound["FX2_Dry / Wet"] = "0 %";
    EXPECT_EQ(TextOf(sound), "");
}

TEST(SlotTextTest, SecondSlotStandsWhereTheProcessorLetsItStand) {
    std::map<std::string, std::string> sound{
        {"FX2_ModuleType", "Chorus"}, {"FX2_Position", "Feedback Loop"}, {"FX2_Dry / Wet", "50 %"}};
    EXPECT_EQ(TextOf(sound), "FX2 Chorus behind the mix");  // never ahead of the first
    sound["FX1_Position"] = "Feedback Loop";
    EXPECT_EQ(TextOf(sound), "FX2 Chorus in the loop");
}

}  // namespace
}  // namespace Quorvan::Tools

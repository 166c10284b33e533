#include "presets/FactoryPresets.h"
#include "tools/ToolRig.h"
#include "tools/audio/DemoSound.h"
#include "tools/render/RenderJob.h"

namespace Quorvan::Tools {
namespace {

class FactoryPresetTest : public RenderRig {
protected:
    FactoryPresetTest() { RunTool({"demo-sound", folder / "in.wav", "--seconds", "5"}); }
};

TEST_F(FactoryPresetTest, AllAreAudibleUnclippedAndDifferentFromTheInput) {
    for (const Host::FactoryPreset& preset : Host::FactoryPresets()) {
        SCOPED_TRACE(preset.id);
        const auto summary =
            Summary({"--preset", std::string(preset.id), "--seed", "11", "--format", "float"});
        EXPECT_TRUE(summary["warnings"].empty()) << summary["warnings"];
        EXPECT_GT(summary["loudnessLufs"].get<double>(), -24.0);
        EXPECT_LT(summary["loudnessLufs"].get<double>(), -12.0);
        EXPECT_LT(summary["peakDb"].get<double>(), 0.0);
        EXPECT_GT(summary["grains"].get<int>(), 8);
        EXPECT_NE(ReadSound(folder / "out.wav"), ReadSound(folder / "in.wav"));
    }
}

TEST_F(FactoryPresetTest, AllAreTold) {
    EXPECT_EQ(Host::FactoryPresets().front().id, "init");
    const Host::ParameterCatalog catalog;
    for (const Host::FactoryPreset& preset : Host::FactoryPresets()) {
        SCOPED_TRACE(preset.id);
        std::vector<std::string> warnings;
        const Host::Preset read = LoadPreset(std::string(preset.id), catalog, warnings);
        EXPECT_FALSE(read.description.empty());
        EXPECT_FALSE(read.tags.empty());
        EXPECT_TRUE(read.tempo.has_value());
        EXPECT_EQ(Host::FindFactoryPreset(read.name), Host::FindFactoryPreset(preset.id));
    }
}

TEST_F(FactoryPresetTest, ConstructedProcessorIsSilent) {
    WriteFile(folder / "bare.json", R"({"format": "tesserae-preset", "version": 1})");
    EXPECT_LT(PeakLevel(Render({"--preset", folder / "bare.json"})[0]), 0.001f);
}

TEST_F(FactoryPresetTest, WhatTheyRouteIsHeard) {
    size_t routed = 0;
    std::set<std::string> sources;
    for (const Host::FactoryPreset& preset : Host::FactoryPresets()) {
        SCOPED_TRACE(preset.id);
        nlohmann::json json = nlohmann::json::parse(preset.json);
        if (json.value("routings", nlohmann::json::array()).empty())
            continue;
        ++routed;
        for (const nlohmann::json& routing : json["routings"])
            sources.insert(routing["source"].get<std::string>());
        json.erase("routings");
        WriteFile(folder / "still.json", json.dump());
        EXPECT_FALSE(Render({"--preset", std::string(preset.id)}) ==
                     Render({"--preset", folder / "still.json"}));
    }
    EXPECT_GE(routed, 8u);
    for (const char* source :
         {"Envelope Follower", "Function 1", "Step Sequencer", "Macro 1", "Macro 2"})
        EXPECT_TRUE(sources.contains(source)) << source;
}

TEST_F(FactoryPresetTest, SettingsGoAheadOfTheirRoutings) {
    const Channels plain = Render({"--preset", "two-hands"});
    for (const char* assignment : {"Modulations_Dst7_Src7_Amount=0.5",
                                   "Modulations_Dst10_Src6_Activated=Off", "Macro 1=0.9"})
        EXPECT_NE(Render({"--preset", "two-hands", "--set", assignment}), plain) << assignment;
}

TEST(DemoSoundTest, IsMusicOfTheSameBitsEveryTime) {
    const Planes sound = MakeDemoSound(48000.0, 2.0);
    const Planes again = MakeDemoSound(48000.0, 2.0);
    for (uint32_t c = 0; c < 2; ++c)
        EXPECT_EQ(sound[c], again[c]);
    EXPECT_NEAR(std::max(PeakLevel(sound[0]), PeakLevel(sound[1])), 0.708f, 0.001f);
    EXPECT_NE(sound[0], sound[1]);
}

}  // namespace
}  // namespace Quorvan::Tools

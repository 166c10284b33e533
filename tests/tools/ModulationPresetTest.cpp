#include <gtest/gtest.h>

#include <set>

#include <nlohmann/json.hpp>

#include "presets/FactoryPresets.h"
#include "tools/ToolRig.h"

namespace Quorvan::test {
namespace {

/// Four seconds of the demo sound through a preset.
class ModulationPresetTest : public ::testing::Test {
protected:
    ModulationPresetTest() {
        EXPECT_EQ(RunTool({"demo-sound", folder / "in.wav", "--seconds", "4"}).exitCode, 0);
    }
    std::string Render(const std::string& preset, const Arguments& more = {}) const {
        Arguments arguments{"render",  folder / "in.wav", "-o",  folder / "out.wav", "--seed",
                            "4",       "--tail",          "0",   "--format",         "float",
                            "--force", "--preset",        preset};
        arguments.insert(arguments.end(), more.begin(), more.end());
        const Outcome outcome = RunTool(arguments);
        EXPECT_EQ(outcome.exitCode, 0) << outcome.err;
        return ReadFile(folder / "out.wav");
    }

    Folder folder;
};

TEST_F(ModulationPresetTest, WhatFactoryPresetsRouteIsHeard) {
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
        EXPECT_FALSE(Render(std::string(preset.id)) == Render(folder / "still.json"));
    }
    EXPECT_GE(routed, 8u);
    for (const char* source :
         {"Envelope Follower", "Function 1", "Step Sequencer", "Macro 1", "Macro 2"})
        EXPECT_TRUE(sources.contains(source)) << source;
}

TEST_F(ModulationPresetTest, SettingsGoAheadOfTheRoutingsOfAPreset) {
    const std::string plain = Render("two-hands");
    EXPECT_FALSE(Render("two-hands", {"--set", "Modulations_Dst7_Src7_Amount=0.5"}) == plain);
    EXPECT_FALSE(Render("two-hands", {"--set", "Modulations_Dst10_Src6_Activated=Off"}) == plain);
    EXPECT_FALSE(Render("two-hands", {"--set", "Macro 1=0.9"}) == plain);
}

}  // namespace
}  // namespace Quorvan::test

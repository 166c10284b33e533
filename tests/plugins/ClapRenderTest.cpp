#include "plugins/claphost/ClapInstance.h"
#include "tools/ToolRig.h"

namespace Quorvan::test {
namespace {

class ClapRenderTest : public RenderRig {};

/// Controls of the plug-in and parameters of the renderer that are the same.
constexpr std::pair<clap_id, const char*> kPairs[]{
    {1, "Dry / Wet"},         {2, "Feedback"},
    {11, "MoteWeaver_Pitch"}, {13, "MoteWeaver_RandomPitch"},
    {19, "MoteWeaver_Spray"}, {20, "MoteWeaver_Width"}};

TEST_F(ClapRenderTest, TheSameEventsSoundAsInTheRenderer) {
    constexpr uint32_t kFrames = 96000, kSeed = 5;
    const ClapHost::Sound input = ClapHost::Noise(kFrames);
    Input(input);
    ClapHost::EventList events;
    std::string automation = "seconds,parameter,position\n";
    for (uint32_t frame = 1010; frame < 90000; frame += 1777) {
        const auto& [id, name] = kPairs[frame % std::size(kPairs)];
        const double position = frame % 1000 / 1000.0;
        events.Add(ClapHost::ValueAt(frame, id, position));
        automation += std::to_string((frame + 0.5) / 48000.0) + "," + name + ",@" +
                      std::to_string(position) + "\n";
    }
    WriteFile(folder / "moves.csv", automation);
    const ClapHost::ClapLibrary library(CLAP_BINARY);
    for (const double tempo : {120.0, 90.0}) {
        const Channels rendered = Render({"--preset", "shimmer", "--tempo", std::to_string(tempo),
                                          "--automation", folder / "moves.csv"});
        ClapHost::ClapInstance instance(library);
        ASSERT_TRUE(instance.LoadPreset(Clap::kLocationPlugin, nullptr, "shimmer"));
        ASSERT_TRUE(instance.FixChance(kSeed));
        instance.Activate(48000.0);
        ClapHost::Event song{};
        ClapHost::RunPlan plan;
        plan.nextFrames = [] { return 333u; };
        plan.song = [&](uint32_t done) {
            song = ClapHost::SongAt(0, tempo, done * tempo / 60.0 / 48000.0, true);
            return &song.song;
        };
        const ClapHost::Sound live = instance.Run(input, events, plan);
        EXPECT_GT(ClapHost::Peak(live), 0.05f);
        const size_t latency = instance.Latency();
        for (size_t c = 0; c < 2; ++c)
            for (size_t i = 0; i + latency < kFrames; ++i)
                ASSERT_EQ(live[c][i + latency], rendered[c][i]) << i << " at " << tempo;
    }
}

TEST_F(ClapRenderTest, InstancesHaveTheUsersMidiMapAndSetList) {
    std::filesystem::create_directories(folder / "tesserae/presets");
    WriteFile(folder / "tesserae/midi-map.json",
              R"({"format": "tesserae-midi-map", "version": 1, "midi": [
                  {"parameter": "Feedback", "source": "controller", "number": 74}]})");
    setenv("XDG_DATA_HOME", (folder / "").c_str(), 1);
    const ClapHost::ClapLibrary library(CLAP_BINARY);
    ClapHost::ClapInstance instance(library);
    instance.Activate(48000.0);
    ClapHost::EventList events;
    const auto header = ClapHost::Header<clap_event_midi_t>(0, CLAP_EVENT_MIDI);
    events.Add({.midi = {header, 0, {0xb0, 74, 127}}});
    instance.Run(ClapHost::Noise(512), events);
    EXPECT_EQ(instance.Value(2), 1.0);

    // A set list counts as it is when the program change comes.
    for (const std::string name : {"Shimmer", "Bar Canon"}) {
        WriteFile(folder / "tesserae/presets/set-list.json", "{\"presets\": [\"" + name + "\"]}");
        ClapHost::EventList programs;
        programs.Add({.midi = {header, 0, {0xc0, 0, 0}}});
        instance.Run(ClapHost::Noise(512), programs);
        instance.plugin->on_main_thread(instance.plugin);
        EXPECT_NE(instance.Save().find("\"preset\": \"" + name + "\""), std::string::npos);
    }
    unsetenv("XDG_DATA_HOME");
    // Conversions of more than was announced find no memory.
    EXPECT_ANY_THROW(instance.Run(ClapHost::Noise(5000), {},
                                  {.nextFrames = [] { return 5000u; }, .wide = true}));
}

}  // namespace
}  // namespace Quorvan::test

#include <limits>
#include <set>

#include "clap/ext/note-ports.h"
#include "plugins/claphost/Check.h"

namespace Quorvan::ClapHost {

TEST_F(Check, TheLibraryTellsWhatItHas) {
    using Descriptor = clap_plugin_descriptor_t;
    const double start = CpuMilliseconds();
    const ClapLibrary library(options.plugin);
    EXPECT_LT(CpuMilliseconds() - start, 100.0);
    const ClapInstance instance(library);
    for (const auto field :
         {&Descriptor::id, &Descriptor::name, &Descriptor::vendor, &Descriptor::version})
        EXPECT_STREQ(library.descriptor->*field, instance.plugin->desc->*field);
    std::set<std::string> features;
    for (const char** feature = library.descriptor->features; *feature != nullptr; ++feature)
        EXPECT_TRUE(features.insert(*feature).second) << *feature << " is told twice.";
    EXPECT_GT(features.count("instrument") + features.count("audio-effect") +
                  features.count("note-effect") + features.count("analyzer"),
              0u);

    const auto* const factory = library.factory;
    clap_host_t host{};
    host.clap_version = CLAP_VERSION;
    const std::string trailing = std::string(library.descriptor->id) + "x";
    for (const char* id :
         {"", "no-such-thing", "clap.plugin-factoryx", "clap.params.x", trailing.c_str()}) {
        EXPECT_EQ(library.entry->get_factory(id), nullptr) << id;
        EXPECT_EQ(factory->create_plugin(factory, &host, id), nullptr) << id;
        EXPECT_EQ(instance.plugin->get_extension(instance.plugin, id), nullptr) << id;
    }
    const uint32_t count = factory->get_plugin_count(factory);
    EXPECT_EQ(factory->get_plugin_descriptor(factory, count), nullptr);
}

using WithConfigurations = With<Clap::kAudioPortsConfigExtension>;
TEST_F(WithConfigurations, PortsAreWhatTheirConfigurationSays) {
    ClapInstance instance(Library());
    const auto& configs =
        instance.Get<Clap::PluginAudioPortsConfig>(Clap::kAudioPortsConfigExtension);
    const auto& ports = instance.Get<clap_plugin_audio_ports_t>(CLAP_EXT_AUDIO_PORTS);
    const clap_plugin_t* const plugin = instance.plugin;
    for (uint32_t i = 0; i < configs.count(plugin); ++i) {
        Clap::AudioPortsConfig config{};
        clap_audio_port_info_t in{}, out{};
        ASSERT_TRUE(configs.get(plugin, i, &config) && configs.select(plugin, config.id));
        ASSERT_TRUE(ports.get(plugin, 0, true, &in) && ports.get(plugin, 0, false, &out));
        EXPECT_EQ(config.inputPortCount, ports.count(plugin, true));
        EXPECT_EQ(config.outputPortCount, ports.count(plugin, false));
        EXPECT_EQ(config.mainInputChannels, in.channel_count);
        EXPECT_EQ(config.mainOutputChannels, out.channel_count);
        EXPECT_STREQ(config.mainInputType, in.port_type);
        EXPECT_STREQ(config.mainOutputType, out.port_type);
        EXPECT_TRUE(in.in_place_pair == CLAP_INVALID_ID || in.channel_count == out.channel_count);
        instance.Activate();
        EXPECT_GT(Peak(instance.Run(Noise(9600))), 0.0f);
        EXPECT_FALSE(configs.select(plugin, config.id)) << "Ports change while active.";
        instance.Deactivate();
    }
    EXPECT_FALSE(configs.select(plugin, 77));
    const auto* const notes = instance.Find<clap_plugin_note_ports_t>(CLAP_EXT_NOTE_PORTS);
    for (uint32_t i = 0; notes != nullptr && i < notes->count(plugin, true); ++i) {
        clap_note_port_info_t info{};
        EXPECT_TRUE(notes->get(plugin, i, true, &info));
        EXPECT_NE(info.preferred_dialect & info.supported_dialects, 0u);
    }
}

/// Wherever the memory lies, and however the buffers are cut.
TEST_F(Check, TheSameEventsSoundTheSame) {
    const auto fixed = [](uint32_t frames) { return [=] { return frames; }; };
    const Sound input = Noise(16000);
    EventList events;
    Sound whole;
    constexpr uint32_t kUsual[]{8, 32, 256, 512, 1024, 1536, 10, 17, 2027};
    size_t turn = 0;
    // Also none at all, which this plug-in takes in process too.
    const auto odd = [&] { return ++turn % 3 == 0 ? 0 : 1 + any.Below(4096); };
    std::vector<RunPlan> plans{{[&] { return kUsual[++turn % std::size(kUsual)]; }}, {odd}};
    for (const uint32_t frames : {441u, 64u, 17u, 1u, 4096u})
        plans.insert(plans.begin(), {fixed(frames)});
    for (int kind = 1; kind < 4; ++kind)
        plans.push_back({.inPlace = kind != 2, .wide = kind > 1});
    for (const RunPlan& plan : plans) {
        ClapInstance instance(Library());
        const bool repeats = instance.FixChance();
        if (!repeats && plan.nextFrames() == 0)
            continue;
        for (uint32_t frame = 0; whole.empty() && frame < 16000; frame += 1 + any.Below(500)) {
            const auto& info = any.ParameterOf(instance);
            events.Add(ValueAt(frame, info.id, any.Within(info)));
        }
        instance.Activate();
        const Sound sound = instance.Run(input, events, plan);
        if (whole.empty())
            whole = sound;
        EXPECT_TRUE(!repeats || sound == whole)
            << plan.nextFrames() << " frames, in place " << plan.inPlace << ", wide " << plan.wide;
    }
}

TEST_F(Check, OddInputPasses) {
    ClapInstance instance(Library());
    instance.Activate();
    const auto run = [&](float sample) {
        const double start = CpuMilliseconds();
        instance.Run(Sound(2, std::vector<float>(24000, sample)), {}, {.loudest = INFINITY});
        return CpuMilliseconds() - start;
    };
    run(0.1f);
    const double normal = run(0.1f), denormal = run(1e-39f);
    EXPECT_LT(denormal, 3.0 * normal + 20.0);
    for (const float odd : {NAN, INFINITY, -INFINITY, std::numeric_limits<float>::max(), 1e9f})
        run(odd);
    instance.Run(Noise(48000), {}, {.noisySides = true, .loudest = INFINITY});
    instance.Run(Noise(9600));
}

TEST_F(Check, ResetAndANewStartLeaveNothing) {
    ClapInstance instance(Library());
    const bool repeats = instance.FixChance();
    instance.Activate();
    const Sound first = instance.Run(Noise(24000));
    instance.Reset();
    EXPECT_LT(Peak(instance.Run(Silence(24000))), 1e-6f);
    instance.Run(Noise(24000));
    instance.Deactivate();
    instance.Activate();
    EXPECT_TRUE(!repeats || instance.Run(Noise(24000)) == first);
}

TEST_F(Check, BypassIsLateByTheLatencyTold) {
    ClapInstance instance(Library());
    instance.Activate();
    const uint32_t latency = instance.Latency();
    EXPECT_LT(latency, 48000u);
    EventList on;
    for (const clap_param_info_t& info : instance.Parameters())
        if ((info.flags & CLAP_PARAM_IS_BYPASS) != 0)
            on.Add(ValueAt(0, info.id, info.max_value));
    if (on.events.empty())
        GTEST_SKIP() << "It has no bypass.";
    ASSERT_EQ(on.events.size(), 1u);
    instance.Run(Noise(9600), on);
    const Sound input = Noise(9600, 3), output = instance.Run(input);
    for (size_t c = 0; c < output.size(); ++c)
        EXPECT_TRUE(std::equal(output[c].begin() + latency, output[c].end(), input[c].begin()));
    instance.Run(Noise(9600), SetAll(instance));
    EXPECT_EQ(instance.Latency(), latency);

    if (const auto* const tail = instance.Find<Clap::PluginTail>(Clap::kTailExtension)) {
        const uint32_t frames = tail->get(instance.plugin);
        EXPECT_EQ(Trapped([&] { return tail->get(instance.plugin); }), frames);
    }
}

}  // namespace Quorvan::ClapHost

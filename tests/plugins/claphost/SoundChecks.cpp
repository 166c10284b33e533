#include <algorithm>
#include <cmath>
#include <cstring>
#include <limits>
#include <set>

#include "clap/ext/note-ports.h"
#include "plugins/claphost/Check.h"

namespace Quorvan::ClapHost {

namespace {

constexpr float kLoudest = 64.0f;  ///< a sound above it runs away

void Scan(Session& s) {
    s.note = std::to_string(s.library.ScanMilliseconds()) + " ms";
    Require(s.library.ScanMilliseconds() < 100.0, "Scanning takes " + s.note + ".");
}

void UnknownIds(Session& s) {
    const clap_plugin_factory_t& factory = s.library.Factory();
    const std::string trailing = std::string(s.library.Descriptor().id) + "x";
    clap_host_t host{};
    host.clap_version = CLAP_VERSION;
    for (const char* id : {"", "clap.plugin-factoryx", "no-such-factory"})
        Require(s.library.Entry().get_factory(id) == nullptr, "An unknown factory is given out.");
    for (const char* id : {"", "no.such.plugin", trailing.c_str()})
        Require(factory.create_plugin(&factory, &host, id) == nullptr,
                "An unknown plug-in id gives a plug-in.");
    ClapInstance instance(s.library);
    for (const char* id : {"", "clap.params.x", "no-such-extension"})
        Require(instance.Find<void*>(id) == nullptr, "An unknown extension is given out.");
    const uint32_t count = factory.get_plugin_count(&factory);
    Require(factory.get_plugin_descriptor(&factory, count) == nullptr,
            "There is a descriptor behind the last plug-in.");
}

void DescriptorsAgree(Session& s) {
    ClapInstance instance(s.library);
    const clap_plugin_descriptor_t& told = s.library.Descriptor();
    const clap_plugin_descriptor_t& own = *instance.plugin->desc;
    for (const auto field : {&clap_plugin_descriptor_t::id, &clap_plugin_descriptor_t::name,
                             &clap_plugin_descriptor_t::vendor, &clap_plugin_descriptor_t::version})
        Require(std::strcmp(told.*field, own.*field) == 0,
                "The descriptors of factory and instance differ.");
    std::set<std::string> features;
    bool main = false;
    for (const char** feature = told.features; *feature != nullptr; ++feature) {
        Require(features.insert(*feature).second, "A feature is told twice.");
        for (const char* kind : {CLAP_PLUGIN_FEATURE_INSTRUMENT, CLAP_PLUGIN_FEATURE_AUDIO_EFFECT,
                                 CLAP_PLUGIN_FEATURE_NOTE_EFFECT, CLAP_PLUGIN_FEATURE_ANALYZER})
            main = main || std::strcmp(*feature, kind) == 0;
    }
    Require(main, "No feature says what kind of plug-in it is.");
}

void PortConfigs(Session& s) {
    ClapInstance instance(s.library);
    const auto& configs = instance.Get<PortsConfigPart>("clap.audio-ports-config");
    const auto& ports = instance.Get<clap_plugin_audio_ports_t>(CLAP_EXT_AUDIO_PORTS);
    const clap_plugin_t* const plugin = instance.plugin;
    for (uint32_t i = 0; i < configs.count(plugin); ++i) {
        PortsConfig config{};
        clap_audio_port_info_t in{}, out{};
        Require(configs.get(plugin, i, &config) && configs.select(plugin, config.id),
                "A configuration can't be chosen.");
        Require(ports.get(plugin, 0, true, &in) && ports.get(plugin, 0, false, &out) &&
                    config.inputPorts == ports.count(plugin, true) &&
                    config.outputPorts == ports.count(plugin, false) &&
                    config.mainInputChannels == in.channel_count &&
                    config.mainOutputChannels == out.channel_count &&
                    std::strcmp(config.mainInputType, in.port_type) == 0 &&
                    std::strcmp(config.mainOutputType, out.port_type) == 0,
                "A configuration and the ports tell different things.");
        Require(in.in_place_pair == CLAP_INVALID_ID || in.channel_count == out.channel_count,
                "Ports of different widths are told to share memory.");
        instance.Activate();
        Require(Peak(instance.Run(Noise(9600))) > 0.0f, "A configuration gives no sound.");
        Require(!configs.select(plugin, config.id), "Ports change while the plug-in is active.");
        instance.Deactivate();
    }
    Require(!configs.select(plugin, 77), "An unknown configuration can be chosen.");
}

/// The same sound, whichever way the memory lies.
void Memory(Session& s) {
    const auto run = [&s](bool inPlace, bool wide) {
        ClapInstance instance(s.library);
        const bool fixed = instance.FixChance();
        instance.Activate();
        const Sound sound = instance.Run(Noise(9600), {}, {.inPlace = inPlace, .wide = wide});
        return fixed ? sound : Silence(9600);
    };
    const Sound plain = run(false, false);
    for (const auto& [inPlace, wide] : {std::pair{true, false}, {false, true}, {true, true}})
        Require(run(inPlace, wide) == plain, "The sound differs in place or in 64 bits.");
}

void Lengths(Session& s) {
    ClapInstance instance(s.library);
    instance.Activate();
    for (const uint32_t frames : {1u, 8u, 32u, 256u, 512u, 1024u, 1536u, 10u, 17u, 2027u})
        instance.Run(Noise(frames * 5), {}, {.nextFrames = [=] { return frames; }});
    instance.Run(Noise(30000), {}, {.nextFrames = [&s] { return 1 + s.Below(4096); }});
}

void Rates(Session& s) {
    ClapInstance instance(s.library);
    for (const double rate : {44100.0, 48000.0, 96000.0, 192000.0, 8000.0, 1234.5678, 12345.678,
                              44123.45, 45678.901, 123456.78, 384000.0}) {
        instance.Activate(rate);
        Require(Peak(instance.Run(Noise(5000))) < kLoudest, "The sound runs away.");
        instance.Deactivate();
    }
}

void OddInput(Session& s) {
    ClapInstance instance(s.library);
    instance.Activate();
    const auto run = [&](float sample) {
        const double start = CpuMilliseconds();
        instance.Run(Sound(2, std::vector<float>(24000, sample)));
        return CpuMilliseconds() - start;
    };
    run(0.1f);
    const double normal = run(0.1f), denormal = run(1e-39f);
    s.note = "denormal input costs " + std::to_string(denormal / normal) + " of normal";
    Require(denormal < 3.0 * normal + 20.0, "Denormal input is slow: " + s.note + ".");
    for (const float odd : {NAN, INFINITY, -INFINITY, std::numeric_limits<float>::max(), 1e9f})
        run(odd);
    instance.Run(Noise(48000));
    Require(Peak(instance.Run(Noise(9600))) < kLoudest, "Bad input is heard for ever.");
}

/// What reset, and a new start, leave behind.
void Starts(Session& s) {
    ClapInstance instance(s.library);
    const bool fixed = instance.FixChance();
    instance.Activate();
    const Sound first = instance.Run(Noise(24000));
    instance.Reset();
    const float left = Peak(instance.Run(Silence(24000)));
    Require(left < 1e-6f, "A reset leaves old sound, peak " + std::to_string(left) + ".");
    instance.Run(Noise(24000));
    instance.Deactivate();
    instance.Activate();
    Require(!fixed || instance.Run(Noise(24000)) == first,
            "Deactivated and activated, the plug-in sounds different.");
}

/// Lively but sensible: values only, so that they mean the same in every cut.
EventList Automation(Session& s, const ClapInstance& instance, uint32_t frames, uint32_t every) {
    EventList events;
    for (uint32_t frame = 0; frame < frames && !instance.Parameters().empty();
         frame += 1 + s.Below(every)) {
        const auto& info =
            instance.Parameters()[s.Below(static_cast<uint32_t>(instance.Parameters().size()))];
        events.Add(ValueAt(frame, info.id,
                           info.min_value + s.Share() * (info.max_value - info.min_value)));
    }
    return events;
}

void Cuts(Session& s) {
    const Sound input = Noise(16000);
    EventList events;
    const auto run = [&](const std::function<uint32_t()>& next) {
        ClapInstance instance(s.library);
        if (!instance.FixChance())
            return Sound();
        if (events.Size() == 0)
            events = Automation(s, instance, 16000, 500);
        instance.Activate();
        return instance.Run(input, events, {.nextFrames = next});
    };
    const Sound whole = run([] { return 4096u; });
    s.note =
        whole.empty() ? "not tried: no seed is known" : std::to_string(events.Size()) + " events";
    for (const uint32_t frames : {17u, 64u, 441u})
        Require(run([=] { return frames; }) == whole,
                "Buffers of " + std::to_string(frames) + " frames change the sound.");
    Require(run([&] { return 1 + s.Below(900); }) == whole, "Random cuts change the sound.");
}

void DenseAutomation(Session& s) {
    ClapInstance instance(s.library);
    instance.Activate();
    const EventList events = Automation(s, instance, 20000, 5);
    Require(Peak(instance.Run(Noise(20000), events)) < kLoudest, "The sound runs away.");
}

void Notes(Session& s) {
    ClapInstance instance(s.library);
    const auto& ports = instance.Get<clap_plugin_note_ports_t>(CLAP_EXT_NOTE_PORTS);
    for (uint32_t i = 0; i < ports.count(instance.plugin, true); ++i) {
        clap_note_port_info_t info{};
        Require(ports.get(instance.plugin, i, true, &info) &&
                    (info.preferred_dialect & info.supported_dialects) != 0,
                "A port of notes prefers what it does not take.");
    }
    instance.Activate();
    EventList events;
    for (uint32_t frame = 0; frame < 20000; frame += s.Below(30)) {
        const auto type = static_cast<uint16_t>(s.Below(4));
        const auto any = [&](uint32_t end) { return static_cast<int>(s.Below(end)) - 1; };
        events.Add(NoteAt(frame, type, any(17), any(129), any(9)));
        events.Add(MidiAt(frame, static_cast<uint8_t>(s.random()), static_cast<uint8_t>(s.random()),
                          static_cast<uint8_t>(s.random())));
    }
    Require(Peak(instance.Run(Noise(20000), events)) < kLoudest, "The sound runs away.");
}

void Songs(Session& s) {
    ClapInstance instance(s.library);
    instance.Activate();
    clap_event_transport_t song{};
    RunPlan plan;
    plan.nextFrames = [&s] { return 1 + s.Below(700); };
    plan.song = [&](uint32_t) {
        constexpr double kTempos[]{0.0, 1e-3, 33.3, 120.0, 120.0, 999.0, 1e6, NAN};
        song = SongAt(0, kTempos[s.Below(8)], 4000.0 * s.Share() - 100.0, s.Below(4) != 0);
        song.flags = s.Below(4) == 0 ? static_cast<uint32_t>(s.random() & 0xff) : song.flags;
        song.loop_end_beats = static_cast<clap_beattime>(s.random());
        return s.Below(8) == 0 ? nullptr : &song;
    };
    EventList events;
    for (uint32_t frame = 0; frame < 40000; frame += s.Below(2000))
        events.Add(SongAt(frame, 20.0 + 300.0 * s.Share(), 64.0 * s.Share(), s.Below(3) != 0));
    Require(Peak(instance.Run(Noise(40000), events, plan)) < kLoudest, "The sound runs away.");
}

/// The delay of the bypass is the latency told, which stays what it was.
void LatencyAndTail(Session& s) {
    ClapInstance instance(s.library);
    instance.Activate();
    const uint32_t latency = instance.Latency();
    s.note = "latency " + std::to_string(latency) + " frames, tail " +
             std::to_string(instance.Tail()) + " frames";
    Require(latency < 48000, "The latency is above a second.");
    EventList on;
    for (const clap_param_info_t& info : instance.Parameters())
        if ((info.flags & CLAP_PARAM_IS_BYPASS) != 0)
            on.Add(ValueAt(0, info.id, info.max_value));
    Require(on.Size() == 1, "There is no one parameter for bypassing.");
    instance.Run(Noise(9600), on);
    Sound input = Noise(9600, 3), output = instance.Run(input);
    for (size_t c = 0; c < output.size(); ++c)
        Require(std::equal(output[c].begin() + latency, output[c].end(), input[c].begin()),
                "The bypass is not the input, late by the latency told.");
    instance.Run(Noise(9600), instance.SetAll([&s] { return s.Share(); }));
    Require(instance.Latency() == latency, "The latency moves.");
}

constexpr Check kChecks[]{
    {"scan", "loads with all symbols bound, in time", Scan},
    {"unknown-ids", "unknown ids, also with something behind, give null", UnknownIds},
    {"descriptor", "factory and instance agree, features say what it is", DescriptorsAgree},
    {"port-configs", "every configuration of ports is what it says, and sounds", PortConfigs},
    {"memory", "in place or not, 32 or 64 bits: one sound, inputs untouched", Memory},
    {"lengths", "buffers of all lengths, also changing", Lengths},
    {"rates", "usual and odd rates, one after the other", Rates},
    {"odd-input", "denormal, infinite and missing numbers", OddInput},
    {"starts", "reset and a new start leave nothing behind", Starts},
    {"cuts", "the same events give the same bits, however buffers are cut", Cuts},
    {"automation", "values every few frames", DenseAutomation},
    {"notes", "plain, contradictory and random notes and MIDI", Notes},
    {"songs", "no song, a random one, changes inside a buffer", Songs},
    {"latency", "bypass is late by the latency told, which is constant", LatencyAndTail},
};

}  // namespace

std::span<const Check> SoundChecks() { return kChecks; }

Event Session::AnyEvent(const ClapInstance& instance, uint32_t frame) {
    const auto& all = instance.Parameters();
    const auto& info = all[Below(static_cast<uint32_t>(all.size()))];
    switch (Below(6)) {
        case 0:
            return ModulationAt(frame, info.id, 2.0 * Share() - 1.0,
                                static_cast<int>(Below(3)) - 1);
        case 1:
            return NoteAt(frame, static_cast<uint16_t>(Below(4)), static_cast<int>(Below(17)) - 1,
                          static_cast<int>(Below(129)) - 1);
        case 2:
            return MidiAt(frame, static_cast<uint8_t>(random()), static_cast<uint8_t>(random()),
                          static_cast<uint8_t>(random()));
        case 3:
            return SongAt(frame, 500.0 * Share(), 300.0 * Share(), Below(4) != 0);
        default:
            return ValueAt(frame, info.id,
                           info.min_value + Share() * (info.max_value - info.min_value));
    }
}

}  // namespace Quorvan::ClapHost

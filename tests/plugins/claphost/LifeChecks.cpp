#include <chrono>
#include <future>
#include <memory>

#include "clap/ext/timer-support.h"
#include "plugins/claphost/Check.h"

namespace Quorvan::ClapHost {

namespace {

/// Sensible or not.
Event AnyEvent(Chance& any, const ClapInstance& instance, uint32_t frame) {
    const auto& info = any.ParameterOf(instance);
    const auto below = [&](uint32_t end) { return static_cast<int>(any.Below(end)) - 1; };
    const uint32_t kind = any.Below(6);
    const auto type = static_cast<uint16_t>(any.Below(4));
    const auto byte = [&] { return static_cast<uint8_t>(any.random()); };
    if (kind == 0)
        return ModulationAt(frame, info.id, 2.0 * any.Share() - 1.0, below(3));
    if (kind == 1)
        return {.note = {Header<clap_event_note_t>(frame, type), below(9), 0,
                         static_cast<int16_t>(below(17)), static_cast<int16_t>(below(129)), 0.7}};
    if (kind == 2)
        return {.midi = {Header<clap_event_midi_t>(frame, CLAP_EVENT_MIDI),
                         0,
                         {byte(), byte(), byte()}}};
    if (kind > 3)
        return ValueAt(frame, info.id, any.Within(info));
    constexpr double kTempos[]{0.0, 1e-3, 33.3, 120.0, 120.0, 999.0, 1e6, NAN};
    Event event = SongAt(frame, any.Of(kTempos), 4000.0 * any.Share() - 100.0, type != 0);
    event.song.flags = any.Below(4) == 0 ? any.Below(256) : event.song.flags;
    event.song.loop_end_beats = static_cast<clap_beattime>(any.random());
    return event;
}

}  // namespace

TEST_F(Check, SoundRunsOnWhileStatesAndPresetsChange) {
    ClapInstance instance(Library());
    instance.Activate();
    std::atomic<bool> stop{false};
    const std::string saved = instance.Find<void>(CLAP_EXT_STATE) ? instance.Save() : "";
    auto audio = std::async(std::launch::async, [&] {
        Chance own{std::mt19937(options.seed)};
        while (!stop) {
            EventList events;
            for (uint32_t i = 0; i < 8; ++i)
                events.Add(AnyEvent(own, instance, i * 10));
            instance.Run(Noise(256), events, {.nextFrames = [] { return 128u; }});
            instance.Flush(events);
            if (own.Below(50) == 0)
                instance.Reset();
        }
    });
    // Goes ahead of the future, which waits for its thread, whatever throws below.
    const std::shared_ptr<void> end(nullptr, [&](void*) { stop = true; });
    for (uint32_t i = 0; i < 30; ++i) {
        EXPECT_TRUE(saved.empty() || instance.Load(instance.Save()));
        if (!options.presets.empty())
            instance.LoadPreset(Clap::kLocationPlugin, nullptr, any.Of(options.presets).c_str());
        using Timers = clap_plugin_timer_support_t;
        if (const auto* const timer = instance.Find<Timers>(CLAP_EXT_TIMER_SUPPORT))
            timer->on_timer(instance.plugin, 0);
    }
    stop = true;
    audio.get();
    EXPECT_TRUE(saved.empty() || (instance.Load(saved) && instance.Save() == saved));
}

/// As in a large session.
TEST_F(Check, ManyInstancesSoundTheSame) {
    std::vector<std::unique_ptr<ClapInstance>> instances;
    bool repeats = true;
    for (uint32_t i = 0; i < std::min(64u, options.lives); ++i) {
        instances.push_back(std::make_unique<ClapInstance>(Library()));
        repeats = instances.back()->FixChance();
        instances.back()->Activate();
    }
    for (uint32_t round = 0; round < 10; ++round) {
        const Sound input = Noise(1000, round), first = instances[0]->Run(input);
        for (size_t i = 1; i < instances.size(); ++i)
            EXPECT_TRUE(instances[i]->Run(input) == first || !repeats) << "Instance " << i;
    }
}

TEST_F(Check, LivesAndThreadsLeaveNoMemoryBehind) {
    constexpr double kRates[]{44100.0,   48000.0,  96000.0,   192000.0,  8000.0,  1234.5678,
                              12345.678, 44123.45, 45678.901, 123456.78, 384000.0};
    const auto live = [&](uint32_t times) {
        ClapInstance other(Library());
        for (uint32_t i = 0; i < times; ++i) {
            ClapInstance instance(Library());
            for (uint32_t start = 0; start < 2; ++start) {
                instance.Activate(kRates[(i + start) % std::size(kRates)]);
                instance.Run(Noise(5000));
                EXPECT_TRUE(!instance.Find<void>(CLAP_EXT_STATE) || instance.Load(instance.Save()));
                instance.Deactivate();
            }
        }
    };
    std::vector<std::future<void>> threads(7);
    for (auto& one : threads)
        one = std::async(std::launch::async, live, 2);
    live(11);
    for (auto& one : threads)
        one.get();
    const double before = ResidentMegabytes();
    live(options.lives);
    const double grown = ResidentMegabytes() - before;
    EXPECT_TRUE(!Trap::Works() || grown < 4.0) << grown << " MB";
}

TEST_F(Check, Soaks) {
    using Clock = std::chrono::steady_clock;
    ClapInstance instance(Library());
    instance.Activate();
    std::vector<std::string> states;
    if (instance.Find<void>(CLAP_EXT_STATE))
        states.push_back(instance.Save());
    Event song = SongAt(0, 120.0, 0.0, true);
    const auto end = Clock::now() + std::chrono::seconds(options.soakSeconds);
    for (uint32_t round = 0; round < 100 || Clock::now() < end; ++round) {
        const uint32_t frames = 1 + any.Below(6000);
        EventList events;
        const uint32_t step = any.Below(4) == 0 ? 5 : 1500;
        for (uint32_t frame = 0; frame < frames; frame += any.Below(step))
            events.Add(AnyEvent(any, instance, frame));
        const Sound input = Noise(frames, round, any.Below(8) == 0 ? 0.0f : 0.5f);
        RunPlan plan{[&] { return any.Below(9) == 0 ? 1 : 1 + any.Below(4096); }};
        plan.inPlace = any.Below(2) == 0;
        plan.wide = any.Below(4) == 0;
        plan.noisySides = any.Below(2) == 0;
        plan.song = [&](uint32_t) {
            const Event next = AnyEvent(any, instance, 0);
            song = next.header.type == CLAP_EVENT_TRANSPORT ? next : song;
            return any.Below(4) == 0 ? nullptr : &song.song;
        };
        instance.Run(input, events, plan);
        const uint32_t turn = any.Below(30);
        if (turn == 0 && !states.empty())
            states.push_back(instance.Save());
        if (turn == 1 && !states.empty())
            Require(instance.Load(any.Of(states)), "A saved state is not taken.");
        if (turn == 2 && !options.presets.empty())
            instance.LoadPreset(Clap::kLocationPlugin, nullptr, any.Of(options.presets).c_str());
        if (turn == 3)
            instance.Reset();
        if (turn == 4) {
            instance.Deactivate();
            instance.Activate(8000.0 + 90000.0 * any.Share());
        }
    }
}

}  // namespace Quorvan::ClapHost

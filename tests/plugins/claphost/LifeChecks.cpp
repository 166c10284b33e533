#include <chrono>
#include <fstream>
#include <memory>
#include <mutex>

#include <malloc.h>
#include <unistd.h>

#include "plugins/claphost/Check.h"
#include "plugins/claphost/Trap.h"

namespace Quorvan::ClapHost {

namespace {

/// What has been freed is given back first, so that it does not hide what is taken next.
double ResidentMegabytes() {
    malloc_trim(0);
    std::ifstream file("/proc/self/statm");
    double all = 0.0, resident = 0.0;
    file >> all >> resident;
    return resident * static_cast<double>(sysconf(_SC_PAGESIZE)) / 1048576.0;
}

/// Runs work on another thread; what it throws is thrown here, by Finish.
class Worker {
public:
    template <class Work>
    explicit Worker(Work work)
        : thread([this, work] {
              try {
                  work();
              } catch (const Failure& failure) {
                  problem = failure.what();
              }
          }) {}
    ~Worker() {
        if (thread.joinable())
            thread.join();
    }
    void Finish() {
        thread.join();
        Require(problem.empty(), problem);
    }

private:
    std::string problem;
    std::thread thread;
};

void Threads(Session& s) {
    const auto live = [&s] {
        ClapInstance instance(s.library);
        for (const double rate : {48000.0, 44100.0}) {
            instance.Activate(rate);
            instance.Run(Noise(9600));
            Require(instance.Load(instance.Save()), "A saved state is not taken.");
            instance.Deactivate();
        }
    };
    Worker first(live), second(live), third(live);
    live();
    first.Finish();
    second.Finish();
    third.Finish();
}

/// The main thread saves, loads and changes presets while the audio thread plays on.
void Together(Session& s) {
    ClapInstance instance(s.library);
    instance.Activate();
    const std::string saved = instance.Save();
    std::atomic<bool> stop{false};
    const uint64_t before = Trap::Caught();
    Worker audio([&] {
        Session own{s.path, s.library};
        while (!stop) {
            EventList events;
            for (uint32_t i = 0; i < 8; ++i)
                events.Add(own.AnyEvent(instance, i * 10));
            instance.Run(Noise(256), events, {.nextFrames = [] { return 128u; }});
            instance.Flush(events);
            if (own.Below(50) == 0)
                instance.Reset();
        }
    });
    const auto* const timer = instance.Find<clap_plugin_timer_support_t>(CLAP_EXT_TIMER_SUPPORT);
    for (uint32_t i = 0; i < 30; ++i) {
        Require(instance.Load(instance.Save()), "A saved state is not taken.");
        if (!s.presets.empty())
            instance.LoadPreset(kPresetInPlugin, nullptr, s.presets[i % s.presets.size()].c_str());
        if (timer != nullptr)
            timer->on_timer(instance.plugin, 0);
    }
    stop = true;
    audio.Finish();
    Require(instance.Load(saved) && instance.Save() == saved, "Threads lose what was loaded.");
    s.note = Trap::Works() ? "with the trap" : "no trap in this build";
    Require(Trap::Caught() == before, "The audio thread allocates or locks.");
}

void Lives(Session& s) {
    const auto live = [&s] {
        ClapInstance instance(s.library);
        instance.Activate();
        instance.Run(Noise(1024));
    };
    for (uint32_t i = 0; i < 5; ++i)
        live();
    const double before = ResidentMegabytes(), start = CpuMilliseconds();
    for (uint32_t i = 0; i < s.lives; ++i)
        live();
    const double grown = ResidentMegabytes() - before;
    s.note = std::to_string(s.lives) + " lives of " +
             std::to_string((CpuMilliseconds() - start) / s.lives) + " ms, grown by " +
             std::to_string(grown) + " MB";
    Require(!Trap::Works() || grown < 4.0, "Memory grows: " + s.note + ".");
}

void Many(Session& s) {
    std::vector<std::unique_ptr<ClapInstance>> all;
    const double before = ResidentMegabytes();
    for (uint32_t i = 0; i < s.instances; ++i) {
        all.push_back(std::make_unique<ClapInstance>(s.library));
        all.back()->Activate();
    }
    for (const auto& instance : all)
        instance->Run(Noise(512));
    s.note = std::to_string(s.instances) + " instances, " +
             std::to_string((ResidentMegabytes() - before) / s.instances) + " MB each";
}

void Soak(Session& s) {
    using Clock = std::chrono::steady_clock;
    ClapInstance instance(s.library);
    instance.Activate();
    std::vector<std::string> states{instance.Save()};
    clap_event_transport_t song{};
    float peak = 0.0f;
    double seconds = 0.0;
    const auto end = Clock::now() + std::chrono::duration<double>(s.soakSeconds);
    while (Clock::now() < end) {
        const uint32_t frames = 1 + s.Below(6000);
        EventList events;
        for (uint32_t frame = 0; frame < frames; frame += 1 + s.Below(1500))
            events.Add(s.AnyEvent(instance, frame));
        const Sound input = s.Below(8) == 0 ? Silence(frames) : Noise(frames, s.Below(~0u), 0.5f);
        RunPlan plan{.nextFrames = [&s] { return s.Below(9) == 0 ? 1 : 1 + s.Below(2000); }};
        plan.inPlace = s.Below(2) == 0;
        plan.wide = s.Below(4) == 0;
        plan.song = [&](uint32_t) {
            if (s.Below(4) == 0)
                song = SongAt(0, 20.0 + 300.0 * s.Share(), 500.0 * s.Share(), s.Below(4) != 0);
            return s.Below(4) == 0 ? nullptr : &song;
        };
        peak = std::max(peak, Peak(instance.Run(input, events, plan)));
        Require(peak < 64.0f, "The sound runs away.");
        seconds += frames / 48000.0;
        switch (s.Below(60)) {
            case 0:
                states.push_back(instance.Save());
                break;
            case 1:
                Require(instance.Load(states[s.Below(static_cast<uint32_t>(states.size()))]),
                        "A saved state is not taken.");
                break;
            case 2:
                if (!s.presets.empty())
                    instance.LoadPreset(
                        kPresetInPlugin, nullptr,
                        s.presets[s.Below(static_cast<uint32_t>(s.presets.size()))].c_str());
                break;
            case 3:
                instance.Reset();
                break;
            case 4:
                instance.Deactivate();
                instance.Activate(8000.0 + 90000.0 * s.Share());
                break;
            default:
                break;
        }
    }
    s.note = std::to_string(seconds) + " s of sound, peak " + std::to_string(peak);
}

constexpr Check kChecks[]{
    {"threads", "several instances in several threads", Threads},
    {"together", "audio runs on while states and presets change, without allocation or lock",
     Together},
    {"lives", "made, run and destroyed again and again", Lives},
    {"many", "many instances at once", Many},
    {"soak", "random events, lengths, states, presets and songs", Soak},
};

}  // namespace

std::span<const Check> LifeChecks() { return kChecks; }

}  // namespace Quorvan::ClapHost

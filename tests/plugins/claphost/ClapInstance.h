#pragma once

#include <array>
#include <atomic>
#include <functional>
#include <set>
#include <string>
#include <thread>

#include "clap/ext/audio-ports.h"
#include "clap/ext/latency.h"
#include "clap/ext/params.h"
#include "clap/ext/state.h"
#include "plugins/clap/ClapExtras.h"
#include "plugins/claphost/Events.h"
#include "plugins/claphost/Sound.h"
#include "plugins/claphost/Trap.h"

namespace Quorvan::ClapHost {

/// How Run drives the plug-in.
struct RunPlan {
    std::function<uint32_t()> nextFrames = [] { return 512u; };  ///< length of each buffer
    bool inPlace = false;
    bool wide = false;        ///< buffers of 64 bits, where the ports take them
    bool noisySides = false;  ///< further inputs get noise instead of silence
    /// Of the buffer from a frame on; without it there is no transport.
    std::function<const clap_event_transport_t*(uint32_t)> song{};
    float loudest = 64.0f;  ///< sound above it runs away
};

/// One instance and the host around it. The thread that makes it is its main thread; whoever
/// processes is its audio thread for that while. Everything throws where a rule is broken.
class ClapInstance {
public:
    explicit ClapInstance(const ClapLibrary& library);
    ~ClapInstance() {
        if (active)
            Deactivate();
        plugin->destroy(plugin);
    }
    ClapInstance(const ClapInstance&) = delete;
    ClapInstance& operator=(const ClapInstance&) = delete;

    /// Null where the plug-in has no such extension.
    template <class Part>
    const Part* Find(const char* id) const {
        return static_cast<const Part*>(plugin->get_extension(plugin, id));
    }
    template <class Part>
    const Part& Get(const char* id) const {
        const Part* const part = Find<Part>(id);
        Require(part != nullptr, std::string("The plug-in has no extension \"") + id + "\".");
        return *part;
    }

    void Activate(double rate = 48000.0);
    void Deactivate();
    void Reset() {
        Trapped([&] { plugin->reset(plugin); });
    }
    /// Main input in, main output out. Inputs stay as they are.
    Sound Run(const Sound& input, const EventList& events = {}, const RunPlan& plan = {});
    /// On the audio thread while active, else on the main one.
    void Flush(const EventList& events);

    const std::vector<clap_param_info_t>& Parameters() const { return parameters; }
    double Value(clap_id id) const;
    std::vector<double> Values() const;
    std::string Text(clap_id id, double value) const;

    std::string Save(uint64_t bytesAtATime = ~0ull) const;
    bool Load(const std::string& state, uint64_t bytesAtATime = ~0ull);
    /// Makes all chance repeat, where it is known how for this plug-in.
    bool FixChance(uint32_t seed = 7);
    /// Every timer runs out, behind a buffer of noise.
    void RunTimers();
    bool LoadPreset(uint32_t kind, const char* location, const char* key);
    uint32_t Latency() const {
        const auto* const latency = Find<clap_plugin_latency_t>(CLAP_EXT_LATENCY);
        return latency != nullptr ? latency->get(plugin) : 0;
    }

    const clap_plugin_t* plugin = nullptr;
    std::string presetError;  ///< the last one that the plug-in told of
    size_t presetsLoaded = 0;
    std::array<uint32_t, 16> eventsTold{};  ///< events that it has given out, by the core's types

private:
    static const void* CLAP_ABI Extension(const clap_host_t*, const char* id);
    /// The instance of a host that the plug-in calls, which it may do on the main thread only.
    static ClapInstance& OnMain(const clap_host_t* host, const char* call = nullptr);
    bool IsMain() const;
    void ThrowComplaints(bool wrongEvents = false);
    void Take(const EventSink& sink);
    template <class Sample>
    Sound ProcessOnce(const Sound& input, uint32_t frames, const EventList& events,
                      const RunPlan& plan, const clap_event_transport_t* song);

    clap_host_t host;
    std::thread::id owner = std::this_thread::get_id();
    std::vector<clap_param_info_t> parameters;
    std::vector<uint32_t> inputChannels, outputChannels;  ///< of each port, as activated
    bool takesWide = false;                               ///< all ports take 64 bits
    bool active = false;
    bool isAsleep = false;  ///< it said so, and nothing has come in since
    int64_t steadyTime = 0;
    std::atomic<const char*> complaint{nullptr};  ///< call of the host from a wrong thread
    clap_id timers = 0;                           ///< ids given out so far
    std::set<clap_id> running;
    std::set<int> files;  ///< that it wants to hear of
};

}  // namespace Quorvan::ClapHost

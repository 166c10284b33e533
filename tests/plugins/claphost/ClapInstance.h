#pragma once

#include <atomic>
#include <functional>
#include <limits>
#include <random>
#include <string>
#include <thread>
#include <vector>

#include "clap/ext/audio-ports.h"
#include "clap/ext/params.h"
#include "clap/ext/state.h"
#include "clap/ext/timer-support.h"
#include "plugins/claphost/ClapLibrary.h"
#include "plugins/claphost/EventList.h"
#include "plugins/claphost/MissingParts.h"

namespace Quorvan::ClapHost {

/// A main bus: one vector for each channel.
using Sound = std::vector<std::vector<float>>;

Sound Noise(size_t frames, uint32_t seed = 1, float level = 0.25f);
Sound Silence(size_t frames);
float Peak(const Sound& sound, size_t from = 0);

/// How Run drives the plug-in.
struct RunPlan {
    std::function<uint32_t()> nextFrames = [] { return 512u; };  ///< length of each buffer
    bool inPlace = false;
    bool wide = false;  ///< buffers of 64 bits
    /// Of the buffer from a frame on; without it there is no transport.
    std::function<const clap_event_transport_t*(uint32_t)> song{};
    bool bounded = true;  ///< the output is looked at: finite, no denormals
};

/// One instance and the host around it. The thread that makes it is its main thread; whoever
/// processes is its audio thread for that while. Everything throws Failure where a rule is broken.
class ClapInstance {
public:
    static constexpr uint32_t kLongest = 4096;  ///< frames of a buffer

    explicit ClapInstance(const ClapLibrary& library);
    ~ClapInstance();
    ClapInstance(const ClapInstance&) = delete;
    ClapInstance& operator=(const ClapInstance&) = delete;

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
    bool IsActive() const { return active; }
    void Reset();
    /// Main input in, main output out; further ports get silence. Inputs stay as they are.
    Sound Run(const Sound& input, const EventList& events = {}, const RunPlan& plan = {});
    /// On the audio thread while active, else on the main one.
    void Flush(const EventList& events);

    const std::vector<clap_param_info_t>& Parameters() const { return parameters; }
    double Value(clap_id id) const;
    std::vector<double> Values() const;
    std::string Text(clap_id id, double value) const;
    /// All parameters at values that share gives 0..1 of, all at frame 0.
    EventList SetAll(const std::function<double()>& share) const;

    std::string Save(uint64_t bytesAtATime = std::numeric_limits<uint64_t>::max()) const;
    bool Load(const std::string& state, uint64_t bytesAtATime = 1 << 20);
    /// Makes all chance repeat, where it is known how for this plug-in.
    bool FixChance(uint32_t seed = 7);
    bool LoadPreset(uint32_t kind, const char* location, const char* key);
    uint32_t Latency() const;
    /// Of both threads that may ask; they have to be told the same.
    uint32_t Tail() const;

    const clap_plugin_t* plugin = nullptr;
    std::string presetError;  ///< the last one that the plug-in told of
    std::atomic<int> presetsLoaded{0};

private:
    static const void* CLAP_ABI Extension(const clap_host_t*, const char* id);
    static ClapInstance& Of(const clap_host_t* host) {
        return *static_cast<ClapInstance*>(host->host_data);
    }
    void OnMain(const char* call);
    bool IsMain() const;
    void ThrowComplaint();
    Sound ProcessOnce(const Sound& input, const EventList& events, const RunPlan& plan,
                      const clap_event_transport_t* song);
    void ReadPorts(bool isInput, std::vector<uint32_t>& channels) const;

    clap_host_t host;
    std::thread::id owner = std::this_thread::get_id();
    std::vector<clap_param_info_t> parameters;
    std::vector<uint32_t> inputChannels, outputChannels;  ///< of each port, as activated
    bool active = false;
    int64_t steadyTime = 0;
    std::atomic<const char*> complaint{nullptr};  ///< call of the host from a wrong thread
    std::atomic<int> timers{0};
};

}  // namespace Quorvan::ClapHost

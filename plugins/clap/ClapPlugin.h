#pragma once

#include <array>
#include <atomic>
#include <memory>
#include <string>
#include <thread>

#include "clap/ext/params.h"
#include "clap/ext/state.h"
#include "clap/ext/timer-support.h"
#include "clap/plugin.h"
#include "host/instrument/Instrument.h"
#include "host/instrument/PresetLibrary.h"
#include "plugins/clap/AudioPorts.h"
#include "plugins/clap/ClapExtras.h"
#include "plugins/clap/EventReader.h"
#include "plugins/clap/Gui.h"

namespace Quorvan::Clap {

/// One instance in a CLAP host: an instrument behind the interface's tables of functions
/// (Extensions.cpp). Threads are those that the interface names for each function.
class ClapPlugin {
public:
    /// Released by the host through clap_plugin::destroy. Null where there is no memory.
    static const clap_plugin_t* Create(const clap_host_t& host);
    static ClapPlugin& Of(const clap_plugin_t* plugin) {
        return *static_cast<ClapPlugin*>(plugin->plugin_data);
    }

    ~ClapPlugin();
    bool Init();
    bool Activate(double rate, uint32_t longestBuffer);
    void Deactivate();
    void Reset() { instrument.Clear(); }
    clap_process_status Process(const clap_process_t& process);

    bool GetParameterInfo(uint32_t index, clap_param_info_t& info) const;
    void Flush(const clap_input_events_t* in, const clap_output_events_t* out);
    bool SaveState(const clap_ostream_t& stream);
    bool LoadState(const clap_istream_t& stream);
    bool LoadPreset(uint32_t kind, const char* location, const char* key);
    /// Any thread: on others than the main one as it was when last asked there, or when a new sound
    /// came.
    uint32_t TailFrames();
    /// A timer of the host's has run out: takes up what MIDI asked for, or looks after the window.
    void OnTimer(clap_id id);
    /// Takes up what MIDI asked for.
    void Poll();
    /// Has the host read all values anew. Main thread.
    void TellOfNewSound();
    void TellOfChanges();
    void RescanValues();
    void Log(int32_t severity, const std::string& sentence) const;
    /// The user's presets. Main thread.
    Host::PresetLibrary& Library();

    Host::Instrument instrument;
    AudioPorts ports;
    Gui gui;

private:
    explicit ClapPlugin(const clap_host_t& pluginHost);

    template <class Extension>
    const Extension* HostExtension(const char* id) const {
        return static_cast<const Extension*>(host.get_extension(&host, id));
    }
    bool Take(const Host::Parsed<Host::Preset>& parsed, std::string& problem);
    bool IsMainThread() const;
    void MeasureTail();
    void FollowTargets();

    const clap_host_t& host;
    clap_plugin_t plugin;
    EventReader reader;
    std::unique_ptr<Host::PresetLibrary> library;
    std::thread::id maker = std::this_thread::get_id();
    std::atomic<uint32_t> tailFrames{0};
    std::atomic<bool> tailHasMoved{false};  ///< the host is to hear of it, on the audio thread
    const HostTail* hostTail = nullptr;
    uint32_t latencyTold = 0;
    uint32_t polls = 0;
    uint32_t knownChanges = 0;  ///< of the instrument, as the host knows them
    std::array<uint32_t, Host::kHostControlRoom> targets{};  ///< what the controls stood for
    double rate = 0.0;
    clap_id timer = CLAP_INVALID_ID;
    std::array<float, Host::kHostControlRoom> defaults{};  ///< positions of a new plug-in
};

}  // namespace Quorvan::Clap

#pragma once

#include <array>
#include <cstdint>
#include <map>
#include <set>
#include <string>

#include "clap/entry.h"
#include "clap/events.h"
#include "clap/plugin-factory.h"
#include "plugins/clap/ClapExtras.h"

namespace Quorvan::Clap {

/// A plug-in in a host of just what a window and its music need: one thread, a state, timers, a
/// stereo input and output, and a song that runs. Throws std::runtime_error, with a sentence, where
/// the plug-in does not do its part.
class PictureHost {
public:
    static constexpr double kRate = 48000.0;
    static constexpr uint32_t kFrames = 800;  ///< of each buffer

    PictureHost(const std::string& library, const std::string& state);
    ~PictureHost();
    PictureHost(const PictureHost&) = delete;
    PictureHost& operator=(const PictureHost&) = delete;

    /// Plays the next buffer of a song of this tempo, then lets the timers that are due run out and
    /// the plug-in take the events of its display.
    void Play(const std::array<const float*, 2>& music, double tempo);

    const clap_plugin_t& Plugin() const { return *plugin; }
    template <class Part>
    const Part& Get(const char* id) const {
        return *static_cast<const Part*>(Need(plugin->get_extension(plugin, id), id));
    }

private:
    struct Timer {
        double period = 0.0, next = 0.0;  ///< in seconds of the song
    };

    static PictureHost& Of(const clap_host_t* host) {
        return *static_cast<PictureHost*>(host->host_data);
    }
    static const void* CLAP_ABI Extension(const clap_host_t*, const char* id);
    static const void* Need(const void* part, const std::string& what);
    void Load(const std::string& state);

    void* handle = nullptr;
    const clap_plugin_entry_t* entry = nullptr;
    clap_host_t host{};
    const clap_plugin_t* plugin = nullptr;
    std::map<clap_id, Timer> timers;
    clap_id timersMade = 0;
    std::set<int> files;  ///< that the plug-in wants to hear of
    int64_t played = 0;   ///< frames
};

}  // namespace Quorvan::Clap

#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <vector>

#include "host/engine/Engine.h"
#include "host/instrument/DisplayFeed.h"
#include "web/engine/DisplayPacket.h"

namespace Quorvan::Web {

/// The engine of an instance, stereo in and out, with the memory that the page fills and reads.
///
/// Threads  all on one. Process, Engine's writes, Load and Picture neither allocate nor wait.
class Player {
public:
    /// Stands at the positions of the desk and has begun, as a render has, when this is through.
    /// sampleRate: within what an engine runs at.
    Player(std::optional<uint64_t> seed, double sampleRate, const Host::Transport& transport);
    ~Player();
    Player(const Player&) = delete;
    Player& operator=(const Player&) = delete;

    Host::Engine& GetEngine() { return engine; }
    /// Channels 0 and 1 are in, 2 and 3 out.
    float* Channel(uint32_t channel, uint32_t frames);
    /// frames: at most those that Channel was last asked for.
    void Process(uint32_t frames);
    /// Puts all settings to the positions of the desk; clears what sounds.
    void Load();
    void Watch(bool on);
    /// A picture that is newer than the last one; null where there is none.
    const float* Picture();

    static bool CanRunAt(double sampleRate);

private:
    static constexpr uint32_t kSides = 2;

    Host::Engine engine;
    Host::DisplayFeed feed;
    DisplayPacket packet;
    std::array<std::vector<float>, 2 * kSides> channels;
    std::vector<Host::ParameterValue> values;  ///< for Load
};

}  // namespace Quorvan::Web

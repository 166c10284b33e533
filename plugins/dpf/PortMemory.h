#pragma once

#include <algorithm>
#include <array>
#include <atomic>
#include <cmath>
#include <limits>
#include <vector>

#include "host/instrument/Instrument.h"

namespace Quorvan::Plugins {

/// Where the ports of a host stand beside the controls that they move. Presets, MIDI and morphs
/// move controls, and not every host lets its ports follow: they come back with a project as they
/// stood, on top of a state that is newer. What they stood at is in the state, too, so that they
/// are told from moves.
///
/// Threads  all calls from any thread, none of them waits.
class PortMemory {
public:
    PortMemory() {
        for (auto* const row : {&ports, &seen, &stale})
            for (std::atomic<float>& value : *row)
                value.store(kNone, std::memory_order_relaxed);
    }

    /// Where a port stands in a new instance, as its control does.
    void Begin(uint32_t id, float value) { seen[id].store(value, std::memory_order_relaxed); }
    /// The host has put a port there. False where that is no move of anybody's.
    bool Hear(uint32_t id, float value) {
        ports[id].store(value, std::memory_order_relaxed);
        return stale[id].exchange(kNone, std::memory_order_relaxed) != value;
    }
    /// Whether the host is to be seen that a port follows its control; once for each value.
    bool AsksFor(uint32_t id, float value) {
        const bool isNew = seen[id].exchange(value, std::memory_order_relaxed) != value;
        return isNew && !AreEqual(value, ports[id].load(std::memory_order_relaxed));
    }

    /// All ports that do not stand where valueOf(id) says that their controls do.
    template <class ValueOf>
    std::vector<Host::PortValue> Apart(ValueOf&& valueOf) const {
        std::vector<Host::PortValue> apart;
        for (const Host::HostControl& control : Host::HostControls()) {
            const float waiting = stale[control.id].load(std::memory_order_relaxed);
            const float value =
                std::isnan(waiting) ? ports[control.id].load(std::memory_order_relaxed) : waiting;
            if (!std::isnan(value) && !AreEqual(value, valueOf(control.id)))
                apart.push_back({control.id, value});
        }
        return apart;
    }
    /// A state was loaded that had been saved with ports apart.
    void Expect(const std::vector<Host::PortValue>& apart) {
        for (std::atomic<float>& value : stale)
            value.store(kNone, std::memory_order_relaxed);
        for (const Host::PortValue& port : apart)
            stale[port.id].store(port.value, std::memory_order_relaxed);
    }

private:
    static constexpr float kNone = std::numeric_limits<float>::quiet_NaN();
    /// The way to a position and back rounds.
    static bool AreEqual(float one, float other) {
        return std::abs(one - other) <= 1.0e-5f * std::max(1.0f, std::abs(one));
    }

    using Row = std::array<std::atomic<float>, Host::kHostControlRoom>;

    Row ports;  ///< as the host has put them; none: never
    Row seen;   ///< where the controls stood at the last look
    Row stale;  ///< what a loaded state's ports stood at, until the host has put them anywhere
};

}  // namespace Quorvan::Plugins

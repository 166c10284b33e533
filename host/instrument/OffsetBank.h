#pragma once

#include <array>
#include <cstdint>

#include "host/instrument/ControlBoard.h"

namespace Quorvan::Host {

/// How far a modulating host moves controls away from their positions, and with them parameters.
/// Audio side only.
class OffsetBank {
public:
    explicit OffsetBank(const ControlBoard& controlBoard) : controls(controlBoard) { Clear(); }

    void Clear();
    /// Calls changed(index) for every parameter whose offset this has changed.
    template <class Changed>
    void Set(uint32_t id, float offset, Changed&& changed) {
        if (id >= kHostControlRoom)
            return;
        offsets[id] = offset;
        Follow(id, changed);
        changed(moved[id]);
    }
    /// To be called where controls may have come to stand for other parameters.
    template <class Changed>
    void FollowTargets(Changed&& changed) {
        if (!InUse())
            return;
        for (uint32_t id = 0; id < kHostControlRoom; ++id)
            if (offsets[id] != 0.0f)
                Follow(id, changed);
    }
    /// Sum of all offsets of a parameter.
    float Of(uint32_t index) const;
    bool InUse() const { return inUse; }

private:
    template <class Changed>
    void Follow(uint32_t id, Changed&& changed) {
        const uint32_t before = moved[id];
        moved[id] = offsets[id] != 0.0f ? controls.TargetOf(id) : kUnassigned;
        CountUse();
        if (before != moved[id] && before != kUnassigned)
            changed(before);
        if (before != moved[id] && moved[id] != kUnassigned)
            changed(moved[id]);
    }
    void CountUse();

    const ControlBoard& controls;
    std::array<float, kHostControlRoom> offsets{};
    std::array<uint32_t, kHostControlRoom> moved{};  ///< parameter that each one moves now
    bool inUse = false;
};

}  // namespace Quorvan::Host

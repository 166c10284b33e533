#pragma once

#include <array>
#include <atomic>
#include <cstdint>

#include "host/instrument/HostControl.h"
#include "host/instrument/PositionBoard.h"
#include "host/parameters/ParameterCatalog.h"

namespace Quorvan::Host {

/// Which parameter each host control moves now, and where the free ones point.
///
/// Threads  all calls from any thread, none of them waits or allocates.
class ControlBoard {
public:
    ControlBoard(const ParameterCatalog& parameters, const PositionBoard& positionBoard);

    /// Index on the position board that control id moves now; kUnassigned for a free control that
    /// points nowhere, and for an id that nobody has.
    uint32_t TargetOf(uint32_t id) const;
    /// Calls take(id) for each control that moves this index now.
    template <class Take>
    void ForEachOf(uint32_t index, Take&& take) const {
        for (const HostControl& control : HostControls())
            if (TargetOf(control.id) == index)
                take(control.id);
    }
    /// Whether a change of this index can change what "Grain Size", "Density" or "Play Head Offset"
    /// stand for.
    bool DecidesTargets(uint32_t index) const { return catalog.Decides(index); }

    /// Points free control number (below kAssignments) at a parameter, or with kUnassigned nowhere.
    void Assign(uint32_t number, uint32_t index) {
        assignments[number].store(index, std::memory_order_relaxed);
    }
    uint32_t Assignment(uint32_t number) const {
        return assignments[number].load(std::memory_order_relaxed);
    }

private:
    uint32_t Choice(uint32_t index) const;
    uint32_t InForce(const LabelFamily& family) const;

    const ParameterCatalog& catalog;
    const LabelFamily& size;
    const LabelFamily& density;
    const LabelFamily& offset;
    const PositionBoard& positions;
    std::array<std::atomic<uint32_t>, kAssignments> assignments;
};

}  // namespace Quorvan::Host

#pragma once

#include <cstdint>
#include <span>
#include <string_view>

#include "host/parameters/ParameterInfo.h"
#include "host/parameters/ShellIndex.h"

namespace Quorvan::Host {

/// What a control moves.
enum class ControlTarget : uint8_t {
    Parameter,   ///< always the same one
    GrainSize,   ///< the size that mode, sync and link put in force
    Density,     ///< the density that mode and type put in force: a rate, a note value, layers
    PlayOffset,  ///< the play head's offset, free or in notes
    Assigned,    ///< the parameter that the user has pointed it at
    Morph        ///< the way from sound A to sound B
};

/// A control that hosts see. Hosts keep its id in projects and automation: a row once given out
/// keeps its id and its meaning for ever, and new ones go behind the last.
struct HostControl {
    uint32_t id = 0;          ///< 0..kHostControlRoom - 1, also its place in the list
    std::string_view name;    ///< "Grain Size"
    std::string_view group;   ///< path for hosts that show groups: "Grains/Pitch"
    std::string_view symbol;  ///< for formats that want a C name: "grain_size"
    ControlTarget target = ControlTarget::Parameter;
    uint32_t index = 0;  ///< Parameter: which one; Assigned: number of the assignment
};

/// Hosts are promised no more than this many, now or later.
inline constexpr uint32_t kHostControlRoom = 64;
inline constexpr uint32_t kAssignments = 16;
inline constexpr uint32_t kMorphControl = 7;
/// An assignment that points nowhere.
inline constexpr uint32_t kUnassigned = 0xffffffff;

/// All of them, by id.
std::span<const HostControl> HostControls();
/// Null for an id that nobody has.
const HostControl* FindHostControl(uint32_t id);

/// Whether free controls and MIDI can move a parameter: all but those that hold no position.
inline bool IsMovable(const ParameterInfo& info) {
    return info.index < kProcessorParameters && info.kind != ParameterKind::Binary;
}

}  // namespace Quorvan::Host

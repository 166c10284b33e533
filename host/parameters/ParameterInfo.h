#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <string_view>

#include "host/parameters/Unit.h"

namespace Quorvan::Host {

/// How a parameter moves.
enum class ParameterKind : uint8_t {
    Continuous,  ///< any number in its range
    Choice,      ///< one of a list of names
    Switch,      ///< "Off" or "On"
    Binary       ///< no number at all: a piece of memory for a user interface
};

/// Whose a parameter is.
enum class ParameterRole : uint8_t {
    Setting,  ///< the user's: belongs into presets and states
    Control,  ///< a lever of the shell: "Bypass", "Panic", "PresetLoading", "GUI Visible"
    Output,   ///< the processor's report: reading only
    Driven    ///< the processor's own: it follows from other parameters or has a fixed place
};

/// One parameter as a list shows it. The texts live as long as the catalog that gave it out.
struct ParameterInfo {
    uint32_t index = 0;
    std::string name;   ///< full name, unique, for files: "FX1_Delay_Feedback"
    std::string group;  ///< for people: "FX1 Delay"
    std::string label;  ///< for people, unique in its group: "Feedback"
    std::string title;  ///< for people, where the group is not told: "FX1 Delay Feedback"
    ParameterKind kind = ParameterKind::Continuous;
    ParameterRole role = ParameterRole::Setting;
    Unit unit = Unit::None;                  ///< of continuous parameters
    double minimum = 0.0, maximum = 1.0;     ///< in unit, as texts show it; choices: 0, count - 1
    float defaultPosition = 0.0f;            ///< position of a new processor
    std::span<const std::string> choices{};  ///< names of the choices, of a switch too

    /// Number of distinct settings; 0 where they are continuous.
    uint32_t StepCount() const { return static_cast<uint32_t>(choices.size()); }
};

}  // namespace Quorvan::Host

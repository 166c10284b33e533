#pragma once

#include <string>
#include <vector>

#include "host/parameters/ParameterInfo.h"
#include "host/parameters/Unit.h"

namespace Quorvan::Host {

using ChoiceList = std::vector<std::string>;

/// How the physical value of a parameter becomes a text: the number times a factor in a unit, or
/// the name of a step.
struct ParameterForm {
    ParameterKind kind = ParameterKind::Continuous;
    Unit unit = Unit::None;
    double factor = 1.0;                       ///< shown number to physical value
    const ChoiceList& (*choices)() = nullptr;  ///< names of the steps; null: their values
    bool silentBottom = false;                 ///< the bottom of a range in decibels is silence
};

/// The forms that tables of parameters are made of.
namespace Form {

constexpr ParameterForm Number(Unit unit, double factor = 1.0) {
    return {.unit = unit, .factor = factor};
}
/// A fraction 0..1 as 0..100 %.
inline constexpr ParameterForm kPercent = Number(Unit::Percent, 100.0);
inline constexpr ParameterForm kPlain = Number(Unit::None);
inline constexpr ParameterForm kHertz = Number(Unit::Hertz);
inline constexpr ParameterForm kMilliseconds = Number(Unit::Milliseconds);
inline constexpr ParameterForm kSeconds = Number(Unit::Seconds);
inline constexpr ParameterForm kDecibels = Number(Unit::Decibels);
inline constexpr ParameterForm kSemitones = Number(Unit::Semitones);
inline constexpr ParameterForm kDegrees = Number(Unit::Degrees);
inline constexpr ParameterForm kSwitch{.kind = ParameterKind::Switch};
/// A step that goes by its number.
inline constexpr ParameterForm kCount{.kind = ParameterKind::Choice};
inline constexpr ParameterForm kBinary{.kind = ParameterKind::Binary};

constexpr ParameterForm Choice(const ChoiceList& (*choices)()) {
    return {.kind = ParameterKind::Choice, .choices = choices};
}

}  // namespace Form

}  // namespace Quorvan::Host

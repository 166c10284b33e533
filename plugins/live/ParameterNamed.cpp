#include "plugins/live/ParameterNamed.h"

#include <algorithm>
#include <optional>
#include <stdexcept>
#include <string>

#include "host/parameters/NumberText.h"
#include "host/parameters/PresentSettings.h"
#include "host/parameters/Sentence.h"

namespace Quorvan::Live {

namespace {

const Host::HostControl* FindControl(std::string_view name) {
    const auto controls = Host::HostControls();
    const auto found = std::find_if(controls.begin(), controls.end(), [&](const auto& control) {
        return Host::Lower(control.name) == Host::Lower(name);
    });
    return found != controls.end() ? &*found : nullptr;
}

/// Why a control that points at no parameter can't be meant.
std::string NoParameter(const Host::HostControl& control) {
    const std::string name = Host::Quoted(control.name);
    if (control.target == Host::ControlTarget::Morph)
        return name + " is no parameter: it goes from sound A to sound B, and hosts alone move it.";
    return name +
           " points at no parameter so far. Name the parameter itself, or point it at one "
           "with --assign.";
}

bool IsNumberedBeyond(std::string_view name) {
    const std::string lower = Host::Lower(name);
    constexpr std::string_view kAssign = "assign ";
    return lower.size() > kAssign.size() && lower.starts_with(kAssign) &&
           lower.find_first_not_of("0123456789", kAssign.size()) == std::string::npos;
}

}  // namespace

uint32_t ParameterNamed(const Host::Instrument& instrument, std::string_view name) {
    const Host::ParameterCatalog& catalog = instrument.Catalog();
    const Host::PresentSettings settings(
        catalog, [&](uint32_t index) { return instrument.Position(index); });
    std::optional<uint32_t> index;
    if (const Host::HostControl* const control = FindControl(name)) {
        index = instrument.ControlTarget(control->id);
        if (control->target == Host::ControlTarget::Morph || *index >= catalog.Count())
            throw std::invalid_argument(NoParameter(*control));
    } else if (IsNumberedBeyond(name)) {
        throw std::invalid_argument(Host::Quoted(name) +
                                    " is no control: they are \"Assign 1\" to "
                                    "\"Assign " +
                                    std::to_string(Host::kAssignments) + "\".");
    } else {
        index = catalog.Resolve(name, settings);
    }
    if (!index)
        throw std::invalid_argument(catalog.UnknownName(name));
    if (!Host::IsMovable(catalog[*index]))
        throw std::invalid_argument(Host::Quoted(name) +
                                    " holds no position that MIDI or a control could move.");
    return *index;
}

}  // namespace Quorvan::Live

#include "tools/render/DrySlot.h"

#include <array>

#include "host/parameters/Sentence.h"
#include "tools/render/RoutingReader.h"

namespace Quorvan::Tools {

namespace {

/// Destinations that move the dry/wet of the slots.
constexpr std::array<uint32_t, 2> kDryWetRows{35, 65};

}  // namespace

DrySlot::DrySlot(const Host::ParameterCatalog& parameters, uint32_t slot)
    : catalog(parameters),
      prefix("FX" + std::to_string(slot + 1) + "_"),
      dryWetRow(kDryWetRows[slot]) {}

uint32_t DrySlot::IndexOf(const char* name) const { return catalog.Find(prefix + name).value(); }

void DrySlot::See(const Host::PresentSettings& settings) {
    const uint32_t type = IndexOf("ModuleType");
    if (isHeard || settings.Choice(type) == 0 || settings.Choice(IndexOf("Bypass")) != 0)
        return;
    if (settings.Position(IndexOf("Dry / Wet")) > 0.0f || IsMoved(settings, dryWetRow))
        isHeard = true;
    else if (dryEffect.empty())
        dryEffect = catalog[type].choices[settings.Choice(type)];
}

std::optional<std::string> DrySlot::Sentence() const {
    if (isHeard || dryEffect.empty())
        return std::nullopt;
    const std::string& title = catalog[IndexOf("Dry / Wet")].title;
    return "The " + dryEffect + " in " + prefix.substr(0, 3) +
           " is not heard: " + Host::Quoted(title) +
           " stands at 0 % and nothing modulates it. Try --set " + Host::Quoted(title + "=30 %") +
           ".";
}

}  // namespace Quorvan::Tools

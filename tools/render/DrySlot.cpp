#include "tools/render/DrySlot.h"

#include <array>

#include "host/parameters/Sentence.h"
#include "tools/render/RoutingReader.h"

namespace Quorvan::Tools {

namespace {

/// Destinations that move the dry/wet of the slots.
constexpr std::array<uint32_t, 2> kDryWetRows{35, 65};
/// The one that moves the feedback.
constexpr uint32_t kFeedbackRow = 1;

}  // namespace

DrySlot::DrySlot(const Host::ParameterCatalog& parameters, uint32_t watched)
    : catalog(parameters),
      places(parameters),
      slot(watched),
      prefix("FX" + std::to_string(watched + 1) + "_") {}

uint32_t DrySlot::IndexOf(const char* name) const { return catalog.Find(prefix + name).value(); }

bool DrySlot::IsLoopClosed(const Host::PresentSettings& settings) const {
    const uint32_t feedback = catalog.Find("Feedback").value();
    return settings.Position(feedback) <= 0.0f && !IsMoved(settings, kFeedbackRow);
}

void DrySlot::See(const Host::PresentSettings& settings) {
    const uint32_t type = IndexOf("ModuleType");
    if (isHeard || settings.Choice(type) == 0 || settings.Choice(IndexOf("Bypass")) != 0)
        return;
    const std::string& effect = catalog[type].choices[settings.Choice(type)];
    const bool isDry =
        settings.Position(IndexOf("Dry / Wet")) <= 0.0f && !IsMoved(settings, kDryWetRows[slot]);
    if (isDry)
        dryEffect = dryEffect.empty() ? effect : dryEffect;
    else if (places.Place(slot, settings) == SlotPlaces::kLoop && IsLoopClosed(settings))
        closedEffect = closedEffect.empty() ? effect : closedEffect;
    else
        isHeard = true;
}

std::optional<std::string> DrySlot::Sentence() const {
    if (isHeard || (dryEffect.empty() && closedEffect.empty()))
        return std::nullopt;
    const std::string in = " in " + prefix.substr(0, 3) + " is not heard: ";
    if (dryEffect.empty())
        return "The " + closedEffect + in +
               "it sits in the feedback loop, but \"Feedback\" stands at -inf dB and nothing "
               "modulates it. Try --set \"Feedback=-6 dB\".";
    const std::string& title = catalog[IndexOf("Dry / Wet")].title;
    return "The " + dryEffect + in + Host::Quoted(title) +
           " stands at 0 % and nothing modulates it. Try --set " + Host::Quoted(title + "=30 %") +
           ".";
}

}  // namespace Quorvan::Tools

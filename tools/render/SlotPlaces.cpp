#include "tools/render/SlotPlaces.h"

#include <algorithm>

#include "host/parameters/Sentence.h"

namespace Quorvan::Tools {

SlotPlaces::SlotPlaces(const Host::ParameterCatalog& parameters)
    : catalog(parameters),
      types{parameters.Find("FX1_ModuleType").value(), parameters.Find("FX2_ModuleType").value()},
      positions{parameters.Find("FX1_Position").value(), parameters.Find("FX2_Position").value()} {}

uint32_t SlotPlaces::Place(uint32_t slot, const Host::PresentSettings& settings) const {
    const uint32_t first = settings.Choice(positions[0]);
    return slot == 0 ? first : std::min(first, settings.Choice(positions[1]));
}

std::optional<std::string> SlotPlaces::Missing(uint32_t index,
                                               const Host::PresentSettings& settings) const {
    if (!Decides(index))
        return std::nullopt;
    const size_t slot = index == positions[0] ? 0 : 1;
    const uint32_t asked = settings.Choice(positions[1]);
    const bool isFilled = settings.Choice(types[1]) != 0;
    // The first one says, also while it is empty, how far ahead the second one may go.
    if (settings.Choice(types[slot]) == 0 && (slot == 1 || !isFilled || asked == 0)) {
        const Host::ParameterInfo& type = catalog[types[slot]];
        return type.group + " holds no effect. It counts with " +
               Host::Quoted(type.title + "=" + type.choices[1]) + ", for example.";
    }
    const Host::ParameterInfo& first = catalog[positions[0]];
    const uint32_t limit = settings.Choice(positions[0]);
    if (slot == 0 || asked <= limit)
        return std::nullopt;
    return "FX2 never sits ahead of FX1, and " + Host::Quoted(first.title) + " stands at " +
           first.choices[limit] + ". It counts with " +
           Host::Quoted(first.title + "=" + first.choices[asked]) + ".";
}

}  // namespace Quorvan::Tools

#include "host/parameters/PresentSettings.h"

#include "host/parameters/ShellIndex.h"

namespace Quorvan::Host {

PresentSettings::PresentSettings(const ParameterCatalog& parameters) : catalog(&parameters) {
    positions.reserve(parameters.Count());
    for (const ParameterInfo& info : parameters.All())
        positions.push_back(info.defaultPosition);
}

PresentSettings::PresentSettings(const ParameterCatalog& parameters,
                                 const std::function<float(uint32_t)>& positionOf)
    : catalog(&parameters) {
    positions.reserve(parameters.Count());
    for (const ParameterInfo& info : parameters.All())
        positions.push_back(positionOf(info.index));
}

uint32_t PresentSettings::Choice(uint32_t index) const {
    return static_cast<uint32_t>(catalog->Value(index, positions[index]));
}

TextContext PresentSettings::Texts() const { return {Choice(kScaleIndex)}; }

}  // namespace Quorvan::Host

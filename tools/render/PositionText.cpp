#include "tools/render/PositionText.h"

#include <string>

#include "host/parameters/NumberText.h"
#include "host/parameters/Sentence.h"
#include "host/parameters/ShellIndex.h"

namespace Quorvan::Tools {

std::optional<double> PlainNumber(std::string_view text) {
    return Host::ParseNumber(text, Host::Unit::None);
}

Host::TextResult ReadPosition(const Host::ParameterCatalog& catalog, uint32_t index,
                              std::string_view text, const Host::TextContext& context) {
    const std::optional<double> number = PlainNumber(text);
    if (!number)
        return catalog.Position(index, text, context);
    if (*number >= 0.0 && *number <= 1.0)
        return {static_cast<float>(*number), {}};
    return {
        {},
        Host::Cited(catalog[index]) + " can't be put at " + std::string(Host::Trim(text)) +
            ": a bare number is a position from 0 to 1. Write a value with its unit, such as \"" +
            catalog.Text(index, 0.5f, context) + "\"."};
}

NamedParameter FindWritable(const Host::ParameterCatalog& catalog, std::string_view name,
                            const Host::PresentSettings& settings) {
    const std::optional<uint32_t> index = catalog.Resolve(name, settings);
    if (!index)
        return {{}, catalog.UnknownName(Host::Trim(name))};
    const Host::ParameterInfo& info = catalog[*index];
    const bool isFree =
        info.role == Host::ParameterRole::Setting ||
        (info.role == Host::ParameterRole::Control && *index != Host::kPresetLoadingIndex);
    if (isFree && info.kind != Host::ParameterKind::Binary)
        return {index, {}};
    constexpr std::string_view kDryWet = "Dry / Wet";  // of an effect follows that of its slot
    const bool isSlots = info.label == kDryWet && info.group.starts_with("FX");
    const std::string advice =
        isSlots ? "set " + Host::Quoted(info.group.substr(0, 3) + " " + std::string(kDryWet))
                : "leave it out";
    return {{}, Host::Cited(info) + " is the processor's own and can't be set; " + advice + "."};
}

}  // namespace Quorvan::Tools

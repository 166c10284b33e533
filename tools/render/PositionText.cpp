#include "tools/render/PositionText.h"

#include <string>

#include "host/parameters/NumberText.h"
#include "host/parameters/Sentence.h"
#include "host/parameters/ShellIndex.h"

namespace Quorvan::Tools {

std::optional<double> PlainNumber(std::string_view text) {
    return Host::ParseNumber(text, Host::Unit::None);
}

namespace {

/// Says how to write a number that is no position: in its unit, where the range holds it.
std::string BareNumberProblem(const Host::ParameterCatalog& catalog, uint32_t index,
                              const std::string& number, const Host::TextContext& context) {
    const Host::ParameterInfo& info = catalog[index];
    const std::string value = number + " " + Host::SignOf(info.unit);
    const std::string start = Host::Cited(info) + " can't be put at " + number +
                              ": a bare number is a position from 0 to 1. ";
    if (catalog.Position(index, value, context).position)
        return start + "Write " + Host::Quoted(value) + " for the value.";
    return start + "A value has its unit and goes from " +
           Host::Quoted(catalog.Text(index, 0.0f, context)) + " to " +
           Host::Quoted(catalog.Text(index, 1.0f, context)) + ".";
}

}  // namespace

Host::TextResult ReadPosition(const Host::ParameterCatalog& catalog, uint32_t index,
                              std::string_view text, const Host::TextContext& context) {
    const std::optional<double> number = PlainNumber(text);
    if (number && *number >= 0.0 && *number <= 1.0)
        return {static_cast<float>(*number), {}};
    // Of choices and of what counts nothing, a number beyond is the value: there is no unit to
    // write behind it.
    if (const Host::Unit unit = catalog[index].unit; number && unit != Host::Unit::None)
        return {{}, BareNumberProblem(catalog, index, std::string(Host::Trim(text)), context)};
    return catalog.Position(index, text, context);
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

#include "host/state/ParameterReader.h"

#include <algorithm>
#include <cmath>
#include <map>
#include <optional>
#include <string>

#include "host/parameters/Sentence.h"
#include "host/parameters/ShellIndex.h"

namespace Quorvan::Host {

namespace {

using Json = nlohmann::json;

/// So many unknown names get a sentence of their own with a suggestion, which takes a search.
constexpr size_t kNamedUnknown = 5;

/// Turns the members of one object into positions.
class PositionReader {
public:
    PositionReader(JsonReader& reporter, const ParameterCatalog& parameterCatalog,
                   ParameterScope fileScope)
        : reader(reporter), catalog(parameterCatalog), scope(fileScope) {}

    std::vector<ParameterValue> Read(const Json& members);

private:
    void ReadScale(const Json& members);
    void ReadMember(const std::string& name, const Json& json);
    void ReportForeign();
    void ReportUnknown(const std::string& name);
    void ReportFurtherUnknown();
    std::optional<float> PositionFrom(const ParameterInfo& info, const Json& json);
    std::optional<float> FromNumber(const ParameterInfo& info, double number);
    std::optional<float> FromText(const ParameterInfo& info, const std::string& text);

    JsonReader& reader;
    const ParameterCatalog& catalog;
    ParameterScope scope;
    TextContext context;
    std::map<uint32_t, float> positions;
    std::vector<std::string> foreign;  ///< names that this file has no say in
    size_t unknown = 0;                ///< names that nobody has
};

std::vector<ParameterValue> PositionReader::Read(const Json& members) {
    ReadScale(members);
    for (const auto& [name, json] : members.items())
        ReadMember(name, json);
    ReportForeign();
    ReportFurtherUnknown();
    std::vector<ParameterValue> values;
    for (const auto& [index, position] : positions)
        values.push_back({index, position});
    return values;
}

/// A pitch as a text means something else in every scale, so the scale has to be known first.
void PositionReader::ReadScale(const Json& members) {
    const ParameterInfo& scale = catalog[kScaleIndex];
    const auto found = members.find(scale.name);
    if (found == members.end())
        return;
    std::optional<float> position;
    if (found->is_number())
        position = static_cast<float>(std::clamp(found->get<double>(), 0.0, 1.0));
    else if (found->is_string())
        position = catalog.Position(kScaleIndex, found->get<std::string>()).position;
    if (position)
        context.scale = static_cast<uint32_t>(catalog.Value(kScaleIndex, *position));
}

void PositionReader::ReadMember(const std::string& name, const Json& json) {
    const std::optional<uint32_t> index = catalog.Find(name);
    if (!index)
        return ReportUnknown(name);
    const ParameterInfo& info = catalog[*index];
    if (!IsStored(info, scope)) {
        foreign.push_back(info.name);
        return;
    }
    if (const auto position = PositionFrom(info, json))
        positions[*index] = *position;
}

void PositionReader::ReportUnknown(const std::string& name) {
    if (unknown++ < kNamedUnknown)
        reader.Warn(catalog.UnknownName(name) + " It is left out.");
}

void PositionReader::ReportFurtherUnknown() {
    if (unknown > kNamedUnknown)
        reader.Warn(std::to_string(unknown - kNamedUnknown) +
                    " more names are those of no parameter. They are left out.");
}

void PositionReader::ReportForeign() {
    if (foreign.empty())
        return;
    const std::string named = Quoted(foreign.front());
    reader.Warn(foreign.size() == 1
                    ? named + " is left out: it is not for this file to set. Remove it."
                    : std::to_string(foreign.size()) + " parameters, such as " + named +
                          ", are left out: they are not for this file to set. Remove them.");
}

std::optional<float> PositionReader::PositionFrom(const ParameterInfo& info, const Json& json) {
    if (json.is_number())
        return FromNumber(info, json.get<double>());
    if (json.is_string())
        return FromText(info, json.get<std::string>());
    if (json.is_boolean() && info.kind == ParameterKind::Switch)
        return json.get<bool>() ? 1.0f : 0.0f;
    reader.Warn(Quoted(info.name) +
                " is left out: it has to be a position from 0 to 1, or a text in quotes.");
    return std::nullopt;
}

std::optional<float> PositionReader::FromNumber(const ParameterInfo& info, double number) {
    const double held = std::clamp(number, 0.0, 1.0);
    if (held != number)
        reader.Warn(Quoted(info.name) + " is at " + Json(number).dump() +
                    ", but positions go from 0 to 1; " + (held > 0.5 ? "1" : "0") + " is taken.");
    return static_cast<float>(held);
}

std::optional<float> PositionReader::FromText(const ParameterInfo& info, const std::string& text) {
    TextResult result = catalog.Position(info.index, text, context);
    if (!result.position)
        reader.Warn(result.problem + " It is left out.");
    return result.position;
}

}  // namespace

bool IsStored(const ParameterInfo& info, ParameterScope scope) {
    if (info.kind == ParameterKind::Binary || info.index == kPresetLoadingIndex)
        return false;
    return info.role == ParameterRole::Setting ||
           (scope == ParameterScope::Project && info.role == ParameterRole::Control);
}

std::vector<ParameterValue> ReadParameters(JsonReader& reader, const ParameterCatalog& catalog,
                                           ParameterScope scope) {
    const Json* const members = reader.Member("parameters", Json::value_t::object);
    return members != nullptr ? PositionReader(reader, catalog, scope).Read(*members)
                              : std::vector<ParameterValue>();
}

}  // namespace Quorvan::Host

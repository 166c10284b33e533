#include "host/state/ParameterReader.h"

#include <algorithm>
#include <map>
#include <optional>
#include <string>

#include "host/parameters/PresentSettings.h"
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
        : reader(reporter),
          catalog(parameterCatalog),
          scope(fileScope),
          settings(parameterCatalog) {}

    std::vector<ParameterValue> Read(const Json& members);

private:
    void ReadMember(const std::string& name, uint32_t index, const Json& json);
    void ReportForeign();
    void ReportUnknown(const std::string& name);
    void ReportFurtherUnknown();
    std::optional<float> PositionFrom(const ParameterInfo& info, const Json& json);
    std::optional<float> FromNumber(const ParameterInfo& info, double number);
    std::optional<float> FromText(const ParameterInfo& info, const std::string& text);

    JsonReader& reader;
    const ParameterCatalog& catalog;
    ParameterScope scope;
    PresentSettings settings;
    std::map<uint32_t, float> positions;
    std::vector<std::string> foreign;  ///< names that this file has no say in
    size_t unknown = 0;                ///< names that nobody has
};

std::vector<ParameterValue> PositionReader::Read(const Json& members) {
    // What decides the meaning of other names and texts has to be known first: modes and the scale.
    std::vector<Json::const_iterator> others;
    for (auto member = members.begin(); member != members.end(); ++member) {
        const std::optional<uint32_t> index = catalog.Resolve(member.key(), settings);
        if (index && catalog.Decides(*index))
            ReadMember(member.key(), *index, *member);
        else
            others.push_back(member);
    }
    for (const Json::const_iterator& member : others) {
        if (const auto index = catalog.Resolve(member.key(), settings))
            ReadMember(member.key(), *index, *member);
        else
            ReportUnknown(member.key());
    }
    ReportForeign();
    ReportFurtherUnknown();
    std::vector<ParameterValue> values;
    for (const auto& [index, position] : positions)
        values.push_back({index, position});
    return values;
}

void PositionReader::ReadMember(const std::string& name, uint32_t index, const Json& json) {
    const ParameterInfo& info = catalog[index];
    if (!IsStored(info, scope)) {
        foreign.push_back(Cited(info));
        return;
    }
    const auto position = PositionFrom(info, json);
    if (!position)
        return;
    // Two names of one parameter: which of them comes last is chance, so the full one counts.
    if (!positions.emplace(index, *position).second) {
        reader.Warn(Cited(info) + " is set under more than one name. Keep one of them.");
        if (!catalog.Find(name))
            return;
        positions[index] = *position;
    }
    settings.Put(index, *position);
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
    const std::string& named = foreign.front();
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
    reader.Warn(Cited(info) +
                " is left out: it has to be a position from 0 to 1, or a text in quotes.");
    return std::nullopt;
}

std::optional<float> PositionReader::FromNumber(const ParameterInfo& info, double number) {
    const double held = std::clamp(number, 0.0, 1.0);
    if (held != number)
        reader.Warn(Cited(info) + " is at " + Json(number).dump() +
                    ", but positions go from 0 to 1; " + (held > 0.5 ? "1" : "0") + " is taken.");
    return static_cast<float>(held);
}

std::optional<float> PositionReader::FromText(const ParameterInfo& info, const std::string& text) {
    TextResult result = catalog.Position(info.index, text, settings.Texts());
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

#include "host/state/PresetFormat.h"

#include <algorithm>
#include <string>

#include <nlohmann/json.hpp>

#include "host/parameters/ModulationNames.h"
#include "host/state/JsonReader.h"
#include "host/state/ParameterReader.h"
#include "host/state/ParameterWriter.h"

namespace Quorvan::Host {

namespace {

constexpr const char* kPresetFormat = "tesserae-preset";
constexpr const char* kStateFormat = "tesserae-state";

using OrderedJson = nlohmann::ordered_json;

OrderedJson RoutingsJson(const std::vector<Routing>& routings) {
    OrderedJson list = OrderedJson::array();
    for (const Routing& routing : routings)
        list.push_back({{"source", SourceName(routing.source)},
                        {"destination", DestinationName(routing.destination)},
                        {"amount", Shortest(routing.amount)}});
    return list;
}

std::string Written(const OrderedJson& json) {
    return json.dump(2, ' ', false, OrderedJson::error_handler_t::replace) + "\n";
}

/// The beginning of every warning about one routing, which counts from 1.
std::string RoutingNamed(size_t number) { return "Routing " + std::to_string(number); }

std::optional<Routing> ReadRouting(JsonReader& reader, const nlohmann::json& json, size_t number) {
    const auto leaveOut = [&](const std::string& why) {
        reader.Warn(RoutingNamed(number) + " is left out. " + why);
        return std::nullopt;
    };
    const std::string source = JsonReader::TextIn(json, "source");
    const std::string destination = JsonReader::TextIn(json, "destination");
    const std::optional<double> amount = JsonReader::NumberIn(json, "amount");
    if (source.empty() || destination.empty() || !amount)
        return leaveOut(
            "Give it a \"source\" and a \"destination\" by name and an \"amount\" from -1 to 1.");
    const auto foundSource = FindSource(source);
    if (!foundSource)
        return leaveOut(UnknownSource(source));
    const auto foundDestination = FindDestination(destination);
    if (!foundDestination)
        return leaveOut(UnknownDestination(destination));
    const double held = std::clamp(*amount, -1.0, 1.0);
    if (held != *amount)
        reader.Warn(RoutingNamed(number) + " has an amount beyond -1 to 1; the end of that range " +
                    "is taken.");
    return Routing{*foundSource, *foundDestination, static_cast<float>(held)};
}

void ReadRoutings(JsonReader& reader, Preset& preset) {
    const nlohmann::json* const list = reader.Member("routings", nlohmann::json::value_t::array);
    if (list == nullptr)
        return;
    for (size_t i = 0; i < list->size(); ++i) {
        if (const auto routing = ReadRouting(reader, (*list)[i], i + 1))
            preset.routings.push_back(*routing);
    }
}

void ReadTags(JsonReader& reader, Preset& preset) {
    const nlohmann::json* const list = reader.Member("tags", nlohmann::json::value_t::array);
    if (list == nullptr)
        return;
    for (const nlohmann::json& tag : *list) {
        if (tag.is_string())
            preset.tags.push_back(tag.get<std::string>());
        else
            reader.Warn("One of the \"tags\" is no text and is left out; write tags in quotes.");
    }
}

void ReadTempo(JsonReader& reader, Preset& preset) {
    if (!reader.Has("tempo"))
        return;
    const std::optional<double> tempo = JsonReader::NumberIn(reader.Root(), "tempo");
    if (tempo && *tempo > 0.0)
        preset.tempo = tempo;
    else
        reader.Warn("\"tempo\" is left out: it has to be a number of beats per minute above 0.");
}

}  // namespace

std::string WritePreset(const Preset& preset, const ParameterCatalog& catalog) {
    OrderedJson json;
    json["format"] = kPresetFormat;
    json["version"] = kPresetVersion;
    json["name"] = preset.name;
    json["description"] = preset.description;
    json["tags"] = preset.tags;
    if (preset.tempo)
        json["tempo"] = *preset.tempo;
    json["parameters"] = ParametersJson(preset.parameters, catalog, PositionStyle::Texts);
    json["routings"] = RoutingsJson(preset.routings);
    return Written(json);
}

Parsed<Preset> ReadPreset(std::string_view json, const ParameterCatalog& catalog) {
    JsonReader reader("preset", kPresetFormat, kPresetVersion);
    if (!reader.Open(json))
        return {std::nullopt, reader.TakeIssues()};
    Preset preset;
    preset.name = reader.OptionalText("name");
    preset.description = reader.OptionalText("description");
    ReadTags(reader, preset);
    ReadTempo(reader, preset);
    preset.parameters = ReadParameters(reader, catalog, ParameterScope::Sound);
    ReadRoutings(reader, preset);
    return {std::move(preset), reader.TakeIssues()};
}

std::string WriteState(const State& state, const ParameterCatalog& catalog) {
    OrderedJson json;
    json["format"] = kStateFormat;
    json["version"] = kStateVersion;
    json["parameters"] = ParametersJson(state.parameters, catalog, PositionStyle::Numbers);
    return Written(json);
}

Parsed<State> ReadState(std::string_view json, const ParameterCatalog& catalog) {
    JsonReader reader("state", kStateFormat, kStateVersion);
    if (!reader.Open(json))
        return {std::nullopt, reader.TakeIssues()};
    return {State{ReadParameters(reader, catalog, ParameterScope::Project)}, reader.TakeIssues()};
}

}  // namespace Quorvan::Host

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

/// Reads the routings of a preset, and reports those that make no sense.
class RoutingReader {
public:
    RoutingReader(JsonReader& reporter, const ParameterCatalog& parameterCatalog)
        : reader(reporter), catalog(parameterCatalog) {}

    std::vector<Routing> Read(const nlohmann::json& list) {
        std::vector<Routing> routings;
        for (number = 1; number <= list.size(); ++number)
            if (const auto routing = ReadOne(list[number - 1]))
                routings.push_back(*routing);
        if (leftOut > kNamed)
            reader.Warn(std::to_string(leftOut - kNamed) +
                        " more routings are left out for such reasons.");
        return routings;
    }

private:
    /// So many get a sentence of their own: one with a suggestion takes a search.
    static constexpr size_t kNamed = 5;

    std::optional<Routing> ReadOne(const nlohmann::json& json);
    /// why makes the reason.
    template <class Why>
    std::nullopt_t LeaveOut(const Why& why) {
        if (leftOut++ < kNamed)
            reader.Warn(Named() + " is left out. " + why());
        return std::nullopt;
    }
    std::string Named() const { return "Routing " + std::to_string(number); }

    JsonReader& reader;
    const ParameterCatalog& catalog;
    size_t number = 0;  ///< of the present one, from 1
    size_t leftOut = 0;
};

std::optional<Routing> RoutingReader::ReadOne(const nlohmann::json& json) {
    reader.TellStrangers(json, {"source", "destination", "amount"}, Named() + ": ");
    const std::string source = JsonReader::TextIn(json, "source");
    const std::string destination = JsonReader::TextIn(json, "destination");
    const std::optional<double> amount = JsonReader::NumberIn(json, "amount");
    if (source.empty() || destination.empty() || !amount)
        return LeaveOut([] {
            return std::string(
                "Give it a \"source\" and a \"destination\" by name and an \"amount\" from -1 to "
                "1.");
        });
    const auto foundSource = FindSource(source);
    if (!foundSource)
        return LeaveOut([&] { return UnknownSource(source); });
    const auto foundDestination = catalog.FindDestination(destination);
    if (!foundDestination)
        return LeaveOut([&] { return UnknownDestination(destination); });
    const double held = std::clamp(*amount, -1.0, 1.0);
    if (held != *amount)
        reader.Warn(Named() + " has an amount beyond -1 to 1; the end of that range is taken.");
    return Routing{*foundSource, *foundDestination, static_cast<float>(held)};
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
    if (tempo && *tempo >= 1.0 && *tempo <= 999.0)
        preset.tempo = tempo;
    else
        reader.Warn(
            "\"tempo\" is left out: it has to be a number of beats per minute, from 1 to 999.");
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
    reader.TellStrangers(reader.Root(), {"format", "version", "name", "description", "tags",
                                         "tempo", "parameters", "routings"});
    Preset preset;
    preset.name = reader.OptionalText("name");
    preset.description = reader.OptionalText("description");
    ReadTags(reader, preset);
    ReadTempo(reader, preset);
    preset.parameters = ReadParameters(reader, catalog, ParameterScope::Sound);
    if (const auto* list = reader.Member("routings", nlohmann::json::value_t::array))
        preset.routings = RoutingReader(reader, catalog).Read(*list);
    reader.TellFurtherStrangers();
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

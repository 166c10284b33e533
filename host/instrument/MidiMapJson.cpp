#include "host/instrument/MidiMapJson.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>
#include <optional>
#include <string>
#include <utility>

#include "host/instrument/InstrumentState.h"
#include "host/state/JsonDepth.h"
#include "host/state/ParameterWriter.h"

namespace Quorvan::Host {

namespace {

using Json = nlohmann::ordered_json;

constexpr const char* kFormat = "tesserae-midi-map";
constexpr size_t kMostBindings = 4096;
/// In the order of MidiSource::Kind and MidiBinding::Take.
constexpr std::array kKinds{"controller", "fine controller", "nrpn",
                            "pitch bend", "pressure",        "note"};
constexpr std::array kTakes{"jump", "pick up", "toggle"};
constexpr std::array kMembers{"source", "channel", "number", "parameter",
                              "low",    "high",    "curve",  "take"};
constexpr std::array<uint16_t, 6> kHighestNumbers{127, 31, 16383, 0, 0, 127};

template <class Names>
std::optional<size_t> Find(const Names& names, const Json& object, const char* member) {
    const auto text = object.find(member);
    if (text == object.end() || !text->is_string())
        return std::nullopt;
    const auto found = std::find(names.begin(), names.end(), text->get<std::string>());
    return found != names.end() ? std::optional<size_t>(found - names.begin()) : std::nullopt;
}

/// Of what is there and no number: none, which lies in no range.
double NumberOf(const Json& object, const char* member, double otherwise) {
    const auto found = object.find(member);
    if (found == object.end())
        return otherwise;
    return found->is_number() ? found->get<double>() : std::numeric_limits<double>::quiet_NaN();
}

/// The members that say nothing here, as a text; empty where there are none.
std::string Unknown(const Json& json) {
    Json unknown = Json::object();
    for (const auto& [name, value] : json.items())
        if (std::find(kMembers.begin(), kMembers.end(), name) == kMembers.end())
            unknown[name] = value;
    return unknown.empty() ? std::string() : unknown.dump();
}

std::optional<MidiBinding> BindingFrom(const Json& json, const ParameterCatalog& catalog) {
    if (!json.is_object())
        return std::nullopt;
    const auto kind = Find(kKinds, json, "source");
    const double channel = NumberOf(json, "channel", 1.0);
    const double number = NumberOf(json, "number", 0.0);
    const auto name = json.find("parameter");
    const uint32_t index = name != json.end() && name->is_string()
                               ? catalog.Find(name->get<std::string>()).value_or(kUnassigned)
                               : kUnassigned;
    const double low = NumberOf(json, "low", 0.0), high = NumberOf(json, "high", 1.0);
    const double curve = NumberOf(json, "curve", 0.0);
    const auto take = json.contains("take") ? Find(kTakes, json, "take") : std::optional<size_t>(0);
    if (!kind || index == kUnassigned || !take || !IsMovable(catalog[index]) ||
        !(channel >= 1.0 && channel <= 16.0) ||
        !(number >= 0.0 && number <= kHighestNumbers[*kind]) || channel != std::floor(channel) ||
        number != std::floor(number) || std::isnan(low + high + curve))
        return std::nullopt;
    MidiBinding binding;
    binding.source = {static_cast<MidiSource::Kind>(*kind), static_cast<uint8_t>(channel - 1.0),
                      static_cast<uint16_t>(number)};
    binding.index = index;
    binding.low = static_cast<float>(std::clamp(low, 0.0, 1.0));
    binding.high = static_cast<float>(std::clamp(high, 0.0, 1.0));
    binding.curve = static_cast<float>(std::clamp(curve, -1.0, 1.0));
    binding.take = static_cast<MidiBinding::Take>(*take);
    binding.foreign = Unknown(json);
    return binding;
}

}  // namespace

Json MidiMapJson(const MidiMap& map, const ParameterCatalog& catalog) {
    Json list = Json::array();
    for (const MidiBinding& binding : map) {
        list.push_back({{"source", kKinds[static_cast<size_t>(binding.source.kind)]},
                        {"channel", binding.source.channel + 1},
                        {"number", binding.source.number},
                        {"parameter", catalog[binding.index].name},
                        {"low", Shortest(binding.low)},
                        {"high", Shortest(binding.high)},
                        {"curve", Shortest(binding.curve)},
                        {"take", kTakes[static_cast<size_t>(binding.take)]}});
        if (!binding.foreign.empty())
            list.back().update(Json::parse(binding.foreign));
    }
    for (Json& entry : Json::parse(map.foreign))
        list.push_back(std::move(entry));
    return list;
}

MidiMap MidiMapFrom(const Json& list, const ParameterCatalog& catalog, std::vector<Issue>& issues) {
    MidiMap map;
    Json foreign = Json::array();
    size_t beyond = 0;
    for (size_t i = 0; i < list.size(); ++i) {
        const auto binding = BindingFrom(list[i], catalog);
        if (binding && map.size() < kMostBindings) {
            map.push_back(*binding);
            continue;
        }
        foreign.push_back(list[i]);
        if (binding) {
            ++beyond;
            continue;
        }
        issues.push_back({Issue::Severity::Warning,
                          "MIDI assignment " + std::to_string(i + 1) +
                              " does nothing: it names a source, a parameter or a take that there "
                              "is not. It stays in the list."});
    }
    if (beyond > 0)
        issues.push_back(
            {Issue::Severity::Warning, "Of the MIDI assignments, " + std::to_string(beyond) +
                                           " do nothing: " + std::to_string(kMostBindings) +
                                           " are as many as there can be. They stay in the list."});
    map.foreign = foreign.dump(-1, ' ', false, Json::error_handler_t::replace);
    return map;
}

std::string WriteMidiMap(const MidiMap& map, const ParameterCatalog& catalog) {
    return Json{{"format", kFormat}, {"version", 1}, {"midi", MidiMapJson(map, catalog)}}.dump(1) +
           "\n";
}

Parsed<MidiMap> ReadMidiMap(std::string_view text, const ParameterCatalog& catalog) {
    Parsed<MidiMap> result;
    const Json root = IsNestedTooDeep(text) ? Json() : Json::parse(text, nullptr, false);
    if (!root.is_object() || root.value("format", Json()) != kFormat || !root.contains("midi") ||
        !root["midi"].is_array()) {
        result.issues.push_back(
            {Issue::Severity::Error,
             "This is no MIDI map: it has no \"format\" of that name, or no list "
             "\"midi\"."});
        return result;
    }
    result.value = MidiMapFrom(root["midi"], catalog, result.issues);
    return result;
}

}  // namespace Quorvan::Host

#include "host/instrument/InstrumentState.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <utility>

#include <nlohmann/json.hpp>

#include "host/instrument/MidiMapJson.h"
#include "host/instrument/SoundDesk.h"
#include "host/parameters/Sentence.h"
#include "host/state/JsonDepth.h"
#include "host/state/ParameterWriter.h"
#include "host/state/PresetFormat.h"

namespace Quorvan::Host {

namespace {

using Json = nlohmann::ordered_json;

constexpr const char* kFormat = "tesserae-instrument";
constexpr std::array kSoundNames{"A", "B"};
constexpr std::array kMembers{"format",     "version",     "preset", "modified", "seed",   "morph",
                              "parameters", "assignments", "sounds", "midi",     "window", "ports"};
constexpr std::array kSoundMembers{"played", "A", "B", "other"};
constexpr std::array kOtherMembers{"preset", "modified"};
constexpr std::array kWindowMembers{"width", "height"};

Json SoundJson(const State& sound, const ParameterCatalog& catalog) {
    std::vector<ParameterValue> moved;
    for (const ParameterValue& value : sound.parameters)
        if (value.position != catalog[value.index].defaultPosition)
            moved.push_back(value);
    return ParametersJson(moved, catalog, PositionStyle::Numbers);
}

Json AssignmentsJson(const InstrumentState& state, const ParameterCatalog& catalog) {
    Json json = Json::object();
    for (uint32_t i = 0; i < kAssignments; ++i)
        if (state.assignments[i] < catalog.Count())
            json[std::to_string(i + 1)] = catalog[state.assignments[i]].name;
    return json;
}

Json SoundsJson(const SoundPair& sounds, const ParameterCatalog& catalog) {
    Json json = Json::object();
    json["played"] = kSoundNames[sounds.played];
    for (uint32_t i = 0; i < sounds.kept.size(); ++i)
        if (sounds.kept[i])
            json[kSoundNames[i]] = SoundJson(*sounds.kept[i], catalog);
    if (sounds.kept[1 - sounds.played])
        json["other"] = {{"preset", sounds.otherPreset}, {"modified", sounds.otherModified}};
    return json;
}

Json PortsJson(const std::vector<PortValue>& ports) {
    Json json = Json::object();
    for (const PortValue& port : ports)
        json[std::string(FindHostControl(port.id)->symbol)] = Shortest(port.value);
    return json;
}

/// Takes out of json what it understands.
std::vector<PortValue> TakePorts(Json& json) {
    std::vector<PortValue> ports;
    for (const HostControl& control : HostControls()) {
        const std::string symbol(control.symbol);
        if (!json.contains(symbol) || !json[symbol].is_number())
            continue;
        ports.push_back({control.id, json[symbol].get<float>()});
        json.erase(symbol);
    }
    return ports;
}

/// Adds what into does not have, and what was of another kind where into says no more than blank,
/// the state of a new instance, does.
void Join(Json& into, const Json& foreign, const Json& blank) {
    for (const auto& [name, json] : foreign.items()) {
        const Json unmoved = blank.value(name, Json::object());
        if (into.contains(name) && into[name].is_object() && json.is_object())
            Join(into[name], json, unmoved);
        else if (!into.contains(name) || into[name] == unmoved)
            into[name] = json;
    }
}

bool IsOfOneKind(const Json& one, const Json& other) {
    return one.type() == other.type() || (one.is_number() && other.is_number());
}

/// The members of an object that are none of known, as an object.
template <class Known>
Json Unknown(const Json& object, const Known& known) {
    Json unknown = Json::object();
    for (const auto& [name, json] : object.items())
        if (std::find(known.begin(), known.end(), name) == known.end())
            unknown[name] = json;
    return unknown;
}

/// All that this version knows.
Json KnownJson(const InstrumentState& state, const ParameterCatalog& catalog) {
    Json json;
    json["format"] = kFormat;
    json["version"] = kInstrumentStateVersion;
    json["preset"] = state.preset;
    json["modified"] = state.modified;
    if (state.seed)
        json["seed"] = *state.seed;
    json["morph"] = Shortest(state.morph);
    json["parameters"] = SoundJson(state.sound, catalog);
    json["assignments"] = AssignmentsJson(state, catalog);
    json["sounds"] = SoundsJson(state.sounds, catalog);
    json["midi"] = MidiMapJson(state.midi, catalog);
    json["window"] = {{"width", state.window.width}, {"height", state.window.height}};
    if (!state.ports.empty())
        json["ports"] = PortsJson(state.ports);
    return json;
}

/// Works through one text.
class StateReader {
public:
    explicit StateReader(const ParameterCatalog& parameters) : catalog(parameters) {}

    Parsed<InstrumentState> Read(std::string_view text);

private:
    bool Open(std::string_view text);
    bool Fail(std::string sentence);
    void Warn(std::string sentence) {
        result.issues.push_back({Issue::Severity::Warning, std::move(sentence)});
    }
    State ReadSound(const Json& members, Json& unknown);
    void ReadSounds(const Json& json);
    void ReadOther(const Json& json, Json& unknown);
    void ReadPorts(Json ports);
    void Keep(const char* name, const Json& unknown);
    void KeepOtherKinds(const Json& read, const Json& blank, Json& kept);
    void ReadAssignments(const Json& json);
    void ReadWindow(const Json& json);
    const Json* Member(const Json& from, const char* name, Json::value_t type) const;

    const ParameterCatalog& catalog;
    Json root;
    Json foreign;
    InstrumentState state;
    Parsed<InstrumentState> result;
};

Parsed<InstrumentState> StateReader::Read(std::string_view text) {
    if (!Open(text))
        return std::move(result);
    foreign = Unknown(root, kMembers);
    Json unknown = Json::object();
    state.sound = ReadSound(root["parameters"], unknown);
    Keep("parameters", unknown);
    if (const Json* const preset = Member(root, "preset", Json::value_t::string))
        state.preset = preset->get<std::string>();
    state.modified = root.value("modified", Json(false)) == true;
    if (root.contains("seed") && root["seed"].is_number_unsigned())
        state.seed = root["seed"].get<uint64_t>();
    else if (root.contains("seed") && !root["seed"].is_null()) {
        foreign["seed"] = root["seed"];
        Warn(root["seed"].dump() + " is left out as a seed: it is a whole number from 0 on.");
    }
    if (root.contains("morph") && root["morph"].is_number())
        state.morph = std::clamp(root["morph"].get<float>(), 0.0f, 1.0f);
    if (const Json* const assignments = Member(root, "assignments", Json::value_t::object))
        ReadAssignments(*assignments);
    if (const Json* const sounds = Member(root, "sounds", Json::value_t::object))
        ReadSounds(*sounds);
    if (const Json* const window = Member(root, "window", Json::value_t::object))
        ReadWindow(*window);
    if (const Json* const midi = Member(root, "midi", Json::value_t::array))
        state.midi = MidiMapFrom(*midi, catalog, result.issues);
    if (const Json* const ports = Member(root, "ports", Json::value_t::object))
        ReadPorts(*ports);
    else if (root.contains("ports"))
        foreign["ports"] = root["ports"];
    KeepOtherKinds(root, KnownJson(InstrumentState(), catalog), foreign);
    state.foreign = foreign.dump();
    result.value = std::move(state);
    return std::move(result);
}

bool StateReader::Open(std::string_view text) {
    if (IsNestedTooDeep(text))
        return Fail("The state is nested deeper than " + std::to_string(kDeepestNesting) +
                    " levels of brackets, which no program of ours writes. The instrument stays "
                    "as it was.");
    root = Json::parse(text, nullptr, false);
    if (root.is_discarded() || !root.is_object())
        return Fail(
            "The state is no JSON text, or it was cut off. The instrument stays as it was.");
    const auto format = root.find("format");
    if (format == root.end() || (*format != kFormat && *format != "tesserae-state"))
        return Fail("This is no state of an instrument: its \"format\" is not " + Quoted(kFormat) +
                    ". The instrument stays as it was.");
    const auto version = root.find("version");
    if (version == root.end() || !version->is_number_integer() || *version < 1)
        return Fail("The state does not say its version. The instrument stays as it was.");
    if (Member(root, "parameters", Json::value_t::object) == nullptr)
        return Fail(
            "The state has no object \"parameters\", and so no sound. The instrument stays as it "
            "was.");
    if (*format == kFormat && *version > kInstrumentStateVersion)
        Warn("The state is of version " + version->dump() + "; what version " +
             std::to_string(kInstrumentStateVersion) + " does not know is kept for later.");
    return true;
}

bool StateReader::Fail(std::string sentence) {
    result.issues.push_back({Issue::Severity::Error, std::move(sentence)});
    return false;
}

const Json* StateReader::Member(const Json& from, const char* name, Json::value_t type) const {
    const auto found = from.find(name);
    return found != from.end() && found->type() == type ? &*found : nullptr;
}

State StateReader::ReadSound(const Json& members, Json& unknown) {
    std::vector<float> positions(catalog.Count());
    for (const ParameterInfo& info : catalog.All())
        positions[info.index] = info.defaultPosition;
    for (const auto& [name, json] : members.items()) {
        const std::optional<uint32_t> index = catalog.Find(name);
        const bool known = index && IsInSounds(catalog[*index]);
        if (known && json.is_number() && std::isfinite(json.get<float>()))
            positions[*index] = std::clamp(json.get<float>(), 0.0f, 1.0f);
        else if (known)
            Warn(Quoted(name) + " is left out: it has to be a position from 0 to 1.");
        if (!known || !json.is_number())
            unknown[name] = json;
    }
    State sound;
    for (const ParameterInfo& info : catalog.All())
        if (IsInSounds(info))
            sound.parameters.push_back({info.index, positions[info.index]});
    return sound;
}

void StateReader::ReadSounds(const Json& json) {
    SoundPair& sounds = state.sounds;
    Json unknown = Unknown(json, kSoundMembers);
    for (uint32_t i = 0; i < kSoundNames.size(); ++i) {
        const char* const name = kSoundNames[i];
        Json inSound = Json::object();
        if (const Json* const sound = Member(json, name, Json::value_t::object))
            sounds.kept[i] = ReadSound(*sound, inSound);
        else if (json.contains(name))
            inSound = json[name];
        if (!inSound.empty())
            unknown[name] = inSound;
        if (json.contains("played") && json["played"] == name)
            sounds.played = i;
    }
    if (json.contains("played") && json["played"] != kSoundNames[sounds.played])
        unknown["played"] = json["played"];
    sounds.otherPreset = state.preset;
    sounds.otherModified = true;
    const Json* const other = Member(json, "other", Json::value_t::object);
    if (other != nullptr)
        ReadOther(*other, unknown);
    else if (json.contains("other"))
        unknown["other"] = json["other"];
    if (!sounds.kept[1 - sounds.played])
        sounds.kept = {};
    else if (other == nullptr || !sounds.kept[sounds.played])
        sounds.kept[sounds.played] = state.sound;
    Keep("sounds", unknown);
}

void StateReader::ReadOther(const Json& json, Json& unknown) {
    if (Json inOther = Unknown(json, kOtherMembers); !inOther.empty())
        unknown["other"] = std::move(inOther);
    if (const Json* const preset = Member(json, "preset", Json::value_t::string))
        state.sounds.otherPreset = preset->get<std::string>();
    state.sounds.otherModified = json.value("modified", Json(false)) == true;
}

void StateReader::ReadPorts(Json ports) {
    state.ports = TakePorts(ports);
    Keep("ports", ports);
}

void StateReader::Keep(const char* name, const Json& unknown) {
    if (!unknown.empty())
        foreign[name] = unknown;
}

/// Keeps the members that are there in another kind than this version writes.
void StateReader::KeepOtherKinds(const Json& read, const Json& blank, Json& kept) {
    for (const auto& [name, ours] : blank.items()) {
        const auto found = read.find(name);
        if (found == read.end())
            continue;
        if (!IsOfOneKind(*found, ours)) {
            kept[name] = *found;
            Warn(Quoted(name) + " is left out: this version knows it in another kind only.");
        } else if (ours.is_object()) {
            Json inside = kept.value(name, Json::object());
            KeepOtherKinds(*found, ours, inside);
            if (!inside.empty())
                kept[name] = std::move(inside);
        }
    }
}

/// What points nowhere here may point somewhere in a newer version.
void StateReader::ReadAssignments(const Json& json) {
    for (const auto& [number, name] : json.items()) {
        uint32_t which = 0;
        const char* const end = number.data() + number.size();
        if (std::from_chars(number.data(), end, which).ptr != end)
            which = 0;
        const auto index = name.is_string() ? catalog.Find(name.get<std::string>()) : std::nullopt;
        if (which >= 1 && which <= kAssignments && index && IsMovable(catalog[*index])) {
            state.assignments[which - 1] = *index;
            continue;
        }
        foreign["assignments"][number] = name;
        Warn("\"Assign " + number + "\" is left out: it points at " + name.dump() +
             ", which is no parameter that it could move.");
    }
}

void StateReader::ReadWindow(const Json& json) {
    Keep("window", Unknown(json, kWindowMembers));
    for (auto [name, edge] :
         {std::pair{"width", &state.window.width}, std::pair{"height", &state.window.height}})
        if (json.contains(name) && json[name].is_number_unsigned())
            *edge = static_cast<uint32_t>(std::min(json[name].get<uint64_t>(), uint64_t{16384}));
}

}  // namespace

std::string WriteInstrumentState(const InstrumentState& state, const ParameterCatalog& catalog) {
    Json json = KnownJson(state, catalog);
    Join(json, Json::parse(state.foreign), KnownJson(InstrumentState(), catalog));
    return json.dump(1, ' ', false, Json::error_handler_t::replace) + "\n";
}

Parsed<InstrumentState> ReadInstrumentState(std::string_view text,
                                            const ParameterCatalog& catalog) {
    return StateReader(catalog).Read(text);
}

}  // namespace Quorvan::Host

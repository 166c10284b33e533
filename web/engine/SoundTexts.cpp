#include "web/engine/SoundTexts.h"

#include "host/engine/TailEstimator.h"
#include "host/parameters/SharedCatalog.h"
#include "host/parameters/ShellIndex.h"
#include "host/state/PresetFormat.h"
#include "host/state/StateTransfer.h"
#include "processor/IProcessor.h"
#include "web/engine/Desk.h"
#include "web/engine/StoredSettings.h"

namespace Quorvan::Web {

namespace {

using Json = nlohmann::json;

/// Texts may hold anything that a file held, so letters that are none become signs that say so.
std::string Dump(const Json& json) {
    return json.dump(-1, ' ', false, Json::error_handler_t::replace);
}

std::string Refusal(const std::vector<Host::Issue>& issues) {
    Json answer = TextsOf({});
    answer["kind"] = nullptr;
    answer["warnings"] = Json::array();
    answer["problem"] = issues.empty() ? std::string() : issues.front().text;
    return Dump(answer);
}

bool SaysState(std::string_view text, const Host::Parsed<Host::State>& state) {
    return state.value.has_value() || text.find("tesserae-state") != std::string_view::npos;
}

std::string TextIn(const Json& object, const char* name) {
    const auto found = object.find(name);
    return found != object.end() && found->is_string() ? found->get<std::string>() : std::string();
}

}  // namespace

Json TextsOf(const Host::Preset& preset) {
    return {{"name", preset.name},
            {"description", preset.description},
            {"tags", preset.tags},
            {"tempo", preset.tempo ? Json(*preset.tempo) : Json()}};
}

std::string SoundTexts::Read(std::string_view text) {
    const Host::ParameterCatalog& catalog = Host::SharedCatalog();
    // A sound without a "Bypass" is not bypassed, whatever was read before.
    engine.GetProcessor().SetParameter(Host::kBypassIndex,
                                       catalog[Host::kBypassIndex].defaultPosition);
    const Host::Parsed<Host::Preset> preset = Host::ReadPreset(text, catalog);
    if (preset.value) {
        Host::ApplyPreset(*preset.value, engine, catalog);
        return Take(*preset.value, "preset", preset.issues);
    }
    const Host::Parsed<Host::State> state = Host::ReadState(text, catalog);
    if (!state.value)
        return Refusal(SaysState(text, state) ? state.issues : preset.issues);
    Host::ApplyState(*state.value, engine, catalog);
    return Take({}, "state", state.issues);
}

std::string SoundTexts::Take(const Host::Preset& texts, const char* kind,
                             const std::vector<Host::Issue>& issues) {
    for (const uint32_t index : StoredSettings())
        Desk::Get().Positions()[index] = engine.Position(index);
    Json answer = TextsOf(texts);
    answer["kind"] = kind;
    answer["problem"] = "";
    answer["warnings"] = Json::array();
    for (const Host::Issue& issue : issues)
        answer["warnings"].push_back(issue.text);
    return Dump(answer);
}

Host::Engine& SoundTexts::Synced() {
    for (const uint32_t index : StoredSettings())
        engine.GetProcessor().SetParameter(index, Desk::Get().Position(index));
    return engine;
}

std::string SoundTexts::WritePreset(std::string_view wanted) {
    const Json texts = Json::parse(wanted, nullptr, false);
    Host::Preset preset = Host::CapturePreset(Synced(), Host::SharedCatalog());
    if (texts.is_object()) {
        preset.name = TextIn(texts, "name");
        preset.description = TextIn(texts, "description");
        for (const Json& tag : texts.value("tags", Json::array()))
            if (tag.is_string())
                preset.tags.push_back(tag.get<std::string>());
        if (const auto tempo = texts.find("tempo"); tempo != texts.end() && tempo->is_number())
            preset.tempo = tempo->get<double>();
    }
    return Host::WritePreset(preset, Host::SharedCatalog());
}

std::string SoundTexts::WriteState() {
    return Host::WriteState(Host::CaptureState(Synced(), Host::SharedCatalog()),
                            Host::SharedCatalog());
}

double SoundTexts::TailSeconds(double tempo) {
    Synced().SetTempo(tempo);
    return Host::EstimateTail(engine, Host::SharedCatalog()).seconds;
}

}  // namespace Quorvan::Web

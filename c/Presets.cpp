#include "presets/FactoryPresets.h"

#include "c/Guard.h"
#include "host/state/PresetFormat.h"
#include "host/state/StateTransfer.h"

using namespace Quorvan;
using namespace Quorvan::C;

namespace {

/// The sentence of the error that left nothing, or all warnings kept with processor.
template <class T>
tesserae_result Sorted(tesserae_processor& processor, const Host::Parsed<T>& parsed) {
    std::vector<std::string> warnings;
    for (const Host::Issue& issue : parsed.issues) {
        if (!parsed.value && issue.severity == Host::Issue::Severity::Error)
            return Fail(&processor, TESSERAE_BAD_TEXT, issue.text);
        warnings.push_back(issue.text);
    }
    if (!parsed.value)
        return Fail(&processor, TESSERAE_BAD_TEXT, "The text can't be read.");
    processor.warnings = std::move(warnings);
    return TESSERAE_OK;
}

tesserae_result Load(tesserae_processor& processor, std::string_view json) {
    const Host::Parsed<Host::Preset> parsed = Host::ReadPreset(json, processor.catalog);
    const tesserae_result result = Sorted(processor, parsed);
    if (result == TESSERAE_OK) {
        Host::ApplyPreset(*parsed.value, processor.engine, processor.catalog);
        processor.presetTempo = parsed.value->tempo;
    }
    return result;
}

tesserae_result Hand(tesserae_processor& processor, std::string text, const char** json) {
    processor.saved = std::move(text);
    *json = processor.saved.c_str();
    return TESSERAE_OK;
}

}  // namespace

tesserae_result tesserae_load_factory_preset(tesserae_processor* processor, const char* name) {
    return WithProcessor(processor, [=] {
        if (name == nullptr)
            return FailForNull(processor, "name");
        const Host::FactoryPreset* const preset = Host::FindFactoryPreset(name);
        return preset != nullptr
                   ? Load(*processor, preset->json)
                   : Fail(processor, TESSERAE_UNKNOWN_NAME, Host::UnknownFactoryPreset(name));
    });
}

tesserae_result tesserae_load_preset(tesserae_processor* processor, const char* json) {
    return WithProcessor(processor, [=] {
        return json != nullptr ? Load(*processor, json) : FailForNull(processor, "json");
    });
}

tesserae_result tesserae_save_preset(tesserae_processor* processor, const char* name,
                                     const char* description, const char** json) {
    return WithProcessor(processor, [=] {
        if (name == nullptr)
            return FailForNull(processor, "name");
        if (json == nullptr)
            return FailForNull(processor, "json");
        Host::Preset preset = Host::CapturePreset(processor->engine, processor->catalog);
        preset.name = name;
        preset.description = description != nullptr ? description : "";
        preset.tempo = processor->presetTempo;
        return Hand(*processor, Host::WritePreset(preset, processor->catalog), json);
    });
}

tesserae_result tesserae_load_state(tesserae_processor* processor, const char* json) {
    return WithProcessor(processor, [=] {
        if (json == nullptr)
            return FailForNull(processor, "json");
        const Host::Parsed<Host::State> parsed = Host::ReadState(json, processor->catalog);
        const tesserae_result result = Sorted(*processor, parsed);
        if (result == TESSERAE_OK) {
            Host::ApplyState(*parsed.value, processor->engine, processor->catalog);
            processor->presetTempo.reset();
        }
        return result;
    });
}

tesserae_result tesserae_save_state(tesserae_processor* processor, const char** json) {
    return WithProcessor(processor, [=] {
        if (json == nullptr)
            return FailForNull(processor, "json");
        const Host::State state = Host::CaptureState(processor->engine, processor->catalog);
        return Hand(*processor, Host::WriteState(state, processor->catalog), json);
    });
}

double tesserae_preset_tempo(const tesserae_processor* processor) {
    return processor != nullptr ? processor->presetTempo.value_or(0.0) : 0.0;
}

uint32_t tesserae_warning_count(const tesserae_processor* processor) {
    return processor != nullptr ? static_cast<uint32_t>(processor->warnings.size()) : 0;
}

const char* tesserae_warning(const tesserae_processor* processor, uint32_t number) {
    return number < tesserae_warning_count(processor) ? processor->warnings[number].c_str()
                                                      : nullptr;
}

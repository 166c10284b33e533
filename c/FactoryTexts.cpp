#include "c/FactoryTexts.h"

#include "c/Guard.h"
#include "presets/FactoryPresets.h"

namespace Quorvan::C {

const std::vector<FactoryText>& FactoryTexts() {
    static const std::vector<FactoryText> texts = [] {
        std::vector<FactoryText> made;
        for (const Host::FactoryPreset& preset : Host::FactoryPresets())
            made.push_back({std::string(preset.id), std::string(preset.json)});
        return made;
    }();
    return texts;
}

}  // namespace Quorvan::C

using namespace Quorvan::C;

uint32_t tesserae_factory_preset_count(void) {
    return GuardedOr(0u, [] { return static_cast<uint32_t>(FactoryTexts().size()); });
}

const char* tesserae_factory_preset_name(uint32_t number) {
    return GuardedOr(nullptr, [=]() -> const char* {
        return number < FactoryTexts().size() ? FactoryTexts()[number].name.c_str() : nullptr;
    });
}

const char* tesserae_factory_preset_text(uint32_t number) {
    return GuardedOr(nullptr, [=]() -> const char* {
        return number < FactoryTexts().size() ? FactoryTexts()[number].json.c_str() : nullptr;
    });
}

#include "web/engine/CatalogText.h"

#include <nlohmann/json.hpp>

#include "host/parameters/ModulationNames.h"
#include "host/parameters/SharedCatalog.h"
#include "host/parameters/Unit.h"
#include "host/state/PresetFormat.h"
#include "plugins/ui/help/HelpTable.h"
#include "presets/FactoryPresets.h"
#include "web/engine/SoundTexts.h"

namespace Quorvan::Web {

namespace {

using Json = nlohmann::json;

/// What the window says on the parameter; "(Free)" and "(Synced)" share one sentence.
std::string_view HelpOn(std::string_view title) {
    const std::string_view exact = Ui::HelpOn(title);
    return exact.empty() ? Ui::HelpOn(title.substr(0, title.find(" ("))) : exact;
}

Json Parameters() {
    Json list = Json::array();
    for (const Host::ParameterInfo& info : Host::SharedCatalog().All()) {
        list.push_back({{"name", info.name},
                        {"group", info.group},
                        {"label", info.label},
                        {"title", info.title},
                        {"unit", Host::SignOf(info.unit)},
                        {"kind", info.kind},
                        {"role", info.role},
                        {"minimum", info.minimum},
                        {"maximum", info.maximum},
                        {"position", info.defaultPosition},
                        {"choices", info.choices},
                        {"help", HelpOn(info.title)}});
    }
    return list;
}

template <class NameOf>
Json Names(uint32_t count, NameOf nameOf) {
    Json names = Json::array();
    for (uint32_t i = 0; i < count; ++i)
        names.push_back(nameOf(i));
    return names;
}

Json Presets() {
    Json list = Json::array();
    for (const Host::FactoryPreset& preset : Host::FactoryPresets()) {
        const auto read = Host::ReadPreset(preset.json, Host::SharedCatalog());
        Json entry = TextsOf(read.value.value_or(Host::Preset{}));
        entry["id"] = preset.id;
        list.push_back(std::move(entry));
    }
    return list;
}

}  // namespace

std::string CatalogText() {
    return Json{{"version", TESSERAE_VERSION},
                {"parameters", Parameters()},
                {"sources", Names(Host::kModulationSources, Host::SourceName)},
                {"destinations", Names(Host::kModulationDestinations, Host::DestinationName)},
                {"presets", Presets()}}
        .dump();
}

}  // namespace Quorvan::Web

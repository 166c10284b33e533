#include "c/ParameterName.h"

#include "c/Guard.h"
#include "host/parameters/PresentSettings.h"
#include "host/parameters/SharedCatalog.h"

namespace Quorvan::C {

namespace {

Host::PresentSettings SettingsOf(const tesserae_processor* processor,
                                 const Host::ParameterCatalog& catalog) {
    if (processor == nullptr)
        return Host::PresentSettings(catalog);
    return {catalog, [processor](uint32_t index) { return processor->engine.Position(index); }};
}

}  // namespace

tesserae_result FindNamed(const tesserae_processor* processor, const char* name, uint32_t& index) {
    const Host::ParameterCatalog& catalog = Host::SharedCatalog();
    const auto found = catalog.Resolve(name, SettingsOf(processor, catalog));
    if (!found)
        return Fail(processor, TESSERAE_UNKNOWN_NAME, catalog.UnknownName(name));
    index = *found;
    return TESSERAE_OK;
}

}  // namespace Quorvan::C

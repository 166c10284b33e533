#include <cstring>
#include <memory>

#include "clap/entry.h"
#include "clap/plugin-factory.h"
#include "plugins/clap/ClapPlugin.h"
#include "plugins/clap/Descriptor.h"

namespace Quorvan::Clap {

namespace {

uint32_t CLAP_ABI Count(const clap_plugin_factory_t*) { return 1; }

const clap_plugin_descriptor_t* CLAP_ABI Describe(const clap_plugin_factory_t*, uint32_t index) {
    return index == 0 ? &Descriptor() : nullptr;
}

const clap_plugin_t* CLAP_ABI Create(const clap_plugin_factory_t*, const clap_host_t* host,
                                     const char* id) {
    const bool known = id != nullptr && std::strcmp(id, Descriptor().id) == 0;
    if (!known || host == nullptr || !clap_version_is_compatible(host->clap_version))
        return nullptr;
    return ClapPlugin::Create(*host);
}

constexpr clap_plugin_factory_t kFactory{Count, Describe, Create};

bool CLAP_ABI Begin(const char*) { return true; }
void CLAP_ABI End() {}
const void* CLAP_ABI Factory(const char* id) {
    return id != nullptr && std::strcmp(id, CLAP_PLUGIN_FACTORY_ID) == 0 ? &kFactory : nullptr;
}

}  // namespace

}  // namespace Quorvan::Clap

extern "C" CLAP_EXPORT const clap_plugin_entry_t clap_entry{
    CLAP_VERSION, Quorvan::Clap::Begin, Quorvan::Clap::End, Quorvan::Clap::Factory};

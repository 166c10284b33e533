// The module's entry in place of the framework's, which is compiled under another name: the
// components that it makes go out as ours.

#include "plugins/dpf/vst3/Vst3Component.h"
#include "travesty/factory.h"

extern "C" const void* FrameworkPluginFactory();

namespace {

/// The framework's own, for all of its factories.
decltype(v3_plugin_factory::create_instance) frameworkCreates = nullptr;

v3_result Create(void* self, const v3_tuid kind, const v3_tuid face, void** instance) {
    const v3_result result = frameworkCreates(self, kind, face, instance);
    if (result == V3_OK)
        *instance = Quorvan::Plugins::Vst3Component::Surround(*instance);
    return result;
}

}  // namespace

extern "C" __attribute__((visibility("default"))) const void* GetPluginFactory() {
    const void* const made = FrameworkPluginFactory();
    auto& factory = **static_cast<v3_plugin_factory_cpp* const*>(made);
    [[maybe_unused]] static const bool isKept =
        (frameworkCreates = factory.v1.create_instance, true);
    factory.v1.create_instance = Create;
    return made;
}

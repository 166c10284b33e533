#pragma once

#include <dlfcn.h>

#include <map>
#include <string>
#include <vector>

#include "lv2/atom.h"
#include "lv2/lv2.h"
#include "lv2/options.h"
#include "lv2/state.h"
#include "lv2/urid.h"
#include "lv2/worker.h"
#include "plugins/claphost/Trap.h"

namespace Quorvan::test {

/// An LV2 plug-in behind the plain C interface, active; ports that nobody connects stay so.
class Lv2Instance {
public:
    explicit Lv2Instance(const char* binary) {
        void* const library = dlopen(binary, RTLD_NOW | RTLD_LOCAL);
        const auto list =
            reinterpret_cast<LV2_Descriptor_Function>(dlsym(library, "lv2_descriptor"));
        plugin = list(0);
        handle = plugin->instantiate(plugin, 48000.0, "", features);
        state = static_cast<const LV2_State_Interface*>(
            plugin->extension_data(LV2_STATE__interface));
        for (uint32_t port = 0; port < 6; ++port) {
            audio[port].resize(kMost);
            plugin->connect_port(handle, port, audio[port].data());
        }
        plugin->connect_port(handle, 6, &eventsIn);
        plugin->connect_port(handle, 7, eventsOut.data());
        plugin->activate(handle);
    }
    ~Lv2Instance() {
        plugin->deactivate(handle);
        plugin->cleanup(handle);
    }
    Lv2Instance(const Lv2Instance&) = delete;
    Lv2Instance& operator=(const Lv2Instance&) = delete;

    void Connect(uint32_t port, float& value) { plugin->connect_port(handle, port, &value); }
    /// At most kMost frames, with the trap set.
    void Run(uint32_t frames) {
        eventsIn = {{sizeof(LV2_Atom_Sequence_Body), Map("atom:Sequence")}, {0, 0}};
        auto* const out = reinterpret_cast<LV2_Atom_Sequence*>(eventsOut.data());
        out->atom.size = static_cast<uint32_t>(eventsOut.size() * sizeof(uint64_t)) - 8;
        const ClapHost::Trap trap;
        plugin->run(handle, frames);
    }
    std::string Save() {
        std::string text;
        state->save(
            handle,
            [](LV2_State_Handle kept, uint32_t, const void* value, size_t size, uint32_t,
               uint32_t) {
                static_cast<std::string*>(kept)->assign(static_cast<const char*>(value), size);
                return LV2_STATE_SUCCESS;
            },
            &text, 0, features);
        return text;
    }
    void Restore(const std::string& text) {
        state->restore(
            handle,
            [](LV2_State_Handle kept, uint32_t, size_t* size, uint32_t* type,
               uint32_t*) -> const void* {
                const auto& held = *static_cast<const std::string*>(kept);
                *size = held.size();
                *type = Map(LV2_ATOM__String);
                return held.c_str();
            },
            const_cast<std::string*>(&text), 0, features);
    }

    static constexpr uint32_t kMost = 512;
    std::vector<float> audio[6];  ///< in, side-chain, out

private:
    static LV2_URID Map(const std::string& uri) {
        static std::map<std::string, LV2_URID> numbers;
        return numbers.try_emplace(uri, static_cast<LV2_URID>(numbers.size() + 1)).first->second;
    }

    LV2_URID_Map map{nullptr, [](LV2_URID_Map_Handle, const char* uri) { return Map(uri); }};
    LV2_Worker_Schedule schedule{nullptr, [](LV2_Worker_Schedule_Handle, uint32_t, const void*) {
                                     return LV2_WORKER_ERR_NO_SPACE;
                                 }};
    LV2_Options_Option options[1]{};
    LV2_Feature mapFeature{LV2_URID__map, &map};
    LV2_Feature workFeature{LV2_WORKER__schedule, &schedule};
    LV2_Feature optionsFeature{LV2_OPTIONS__options, options};
    const LV2_Feature* features[4]{&mapFeature, &workFeature, &optionsFeature, nullptr};
    const LV2_Descriptor* plugin = nullptr;
    LV2_Handle handle = nullptr;
    const LV2_State_Interface* state = nullptr;
    LV2_Atom_Sequence eventsIn{};
    std::vector<uint64_t> eventsOut = std::vector<uint64_t>(1024);
};

}  // namespace Quorvan::test

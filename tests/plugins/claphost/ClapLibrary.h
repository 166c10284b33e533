#pragma once

#include <dlfcn.h>

#include <ctime>
#include <stdexcept>
#include <string>

#include "clap/entry.h"
#include "clap/plugin-factory.h"

namespace Quorvan::ClapHost {

inline void Require(bool holds, const std::string& sentence) {
    if (!holds)
        throw std::runtime_error(sentence);
}

/// Processor time that the process has used: other programs do not count.
inline double CpuMilliseconds() { return 1e3 * static_cast<double>(std::clock()) / CLOCKS_PER_SEC; }

/// A .clap as loaded, with every symbol bound. Throws where that fails.
struct ClapLibrary {
    explicit ClapLibrary(const std::string& path) : handle(dlopen(path.c_str(), RTLD_NOW)) {
        Require(handle != nullptr, "The library can't be loaded, or lacks symbols: " + path);
        entry = static_cast<const clap_plugin_entry_t*>(dlsym(handle, "clap_entry"));
        Require(entry != nullptr && clap_version_is_compatible(entry->clap_version),
                "The library has no \"clap_entry\", or one of a version below 1.");
        Require(entry->init(path.c_str()), "The entry's init answers false.");
        factory =
            static_cast<const clap_plugin_factory_t*>(entry->get_factory(CLAP_PLUGIN_FACTORY_ID));
        Require(factory != nullptr && factory->get_plugin_count(factory) > 0,
                "There is no factory of plug-ins, or nothing in it.");
        descriptor = factory->get_plugin_descriptor(factory, 0);
        Require(descriptor != nullptr && descriptor->id != nullptr && descriptor->name != nullptr,
                "The first plug-in has no descriptor with an id and a name.");
    }
    ~ClapLibrary() {
        entry->deinit();
        dlclose(handle);
    }
    ClapLibrary(const ClapLibrary&) = delete;
    ClapLibrary& operator=(const ClapLibrary&) = delete;

    void* handle;
    const clap_plugin_entry_t* entry = nullptr;
    const clap_plugin_factory_t* factory = nullptr;
    const clap_plugin_descriptor_t* descriptor = nullptr;  ///< of the first one, which is checked
};

}  // namespace Quorvan::ClapHost

#include "plugins/claphost/ClapLibrary.h"

#include <dlfcn.h>

#include <ctime>

namespace Quorvan::ClapHost {

double CpuMilliseconds() {
    timespec now{};
    clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &now);
    return 1e3 * static_cast<double>(now.tv_sec) + 1e-6 * static_cast<double>(now.tv_nsec);
}

ClapLibrary::ClapLibrary(const std::string& path) {
    const double start = CpuMilliseconds();
    handle = dlopen(path.c_str(), RTLD_NOW | RTLD_LOCAL);
    if (handle == nullptr)
        throw Failure(std::string("The library can't be loaded: ") + dlerror());
    entry = static_cast<const clap_plugin_entry_t*>(dlsym(handle, "clap_entry"));
    Require(entry != nullptr, "The library exports no \"clap_entry\".");
    Require(clap_version_is_compatible(entry->clap_version), "The library's version is below 1.");
    Require(entry->init(path.c_str()), "The entry's init answers false.");
    factory = static_cast<const clap_plugin_factory_t*>(entry->get_factory(CLAP_PLUGIN_FACTORY_ID));
    Require(factory != nullptr, "There is no factory of plug-ins.");
    Require(factory->get_plugin_count(factory) > 0, "The factory has no plug-in.");
    Descriptor();
    scanMs = CpuMilliseconds() - start;
}

ClapLibrary::~ClapLibrary() {
    entry->deinit();
    dlclose(handle);
}

const clap_plugin_descriptor_t& ClapLibrary::Descriptor() const {
    const auto* const descriptor = factory->get_plugin_descriptor(factory, 0);
    Require(descriptor != nullptr && descriptor->id != nullptr && descriptor->name != nullptr,
            "The first plug-in has no descriptor with an id and a name.");
    return *descriptor;
}

}  // namespace Quorvan::ClapHost

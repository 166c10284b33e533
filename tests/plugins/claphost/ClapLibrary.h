#pragma once

#include <stdexcept>
#include <string>

#include "clap/entry.h"
#include "clap/plugin-factory.h"

namespace Quorvan::ClapHost {

/// What a check finds wrong, as a sentence.
struct Failure : std::runtime_error {
    using runtime_error::runtime_error;
};

inline void Require(bool holds, const std::string& sentence) {
    if (!holds)
        throw Failure(sentence);
}

/// A .clap as loaded, with every symbol bound. Throws Failure where that fails.
class ClapLibrary {
public:
    explicit ClapLibrary(const std::string& path);
    ~ClapLibrary();
    ClapLibrary(const ClapLibrary&) = delete;
    ClapLibrary& operator=(const ClapLibrary&) = delete;

    const clap_plugin_entry_t& Entry() const { return *entry; }
    const clap_plugin_factory_t& Factory() const { return *factory; }
    /// Of the first plug-in in it, the one that is checked.
    const clap_plugin_descriptor_t& Descriptor() const;
    /// From opening the file to the descriptor, in the processor's time.
    double ScanMilliseconds() const { return scanMs; }

private:
    void* handle;
    const clap_plugin_entry_t* entry = nullptr;
    const clap_plugin_factory_t* factory = nullptr;
    double scanMs = 0.0;
};

/// Processor time that the process has used, in milliseconds: other programs do not count.
double CpuMilliseconds();

}  // namespace Quorvan::ClapHost

#pragma once

#include <random>
#include <span>
#include <string>
#include <vector>

#include "plugins/claphost/ClapInstance.h"

namespace Quorvan::ClapHost {

/// What the command line asked for, and what all checks share.
struct Session {
    std::string path;
    const ClapLibrary& library;
    uint32_t seed = 1;
    uint32_t lives = 20;
    uint32_t instances = 64;
    double soakSeconds = 1.0;
    std::vector<std::string> presets{};  ///< keys of the plug-in's own
    std::mt19937 random{1};
    std::string note{};  ///< what a check has measured

    double Share() { return static_cast<double>(random()) / 4294967295.0; }
    uint32_t Below(uint32_t end) { return static_cast<uint32_t>(random() % end); }
    /// Any event in a buffer of some frames, sensible or not.
    Event AnyEvent(const ClapInstance& instance, uint32_t frame);
};

/// Throws Failure with a sentence where the plug-in does not do what the second column says.
struct Check {
    const char* name;
    const char* fact;
    void (*run)(Session&);
};

std::span<const Check> SoundChecks();
std::span<const Check> ValueChecks();
std::span<const Check> LifeChecks();

}  // namespace Quorvan::ClapHost

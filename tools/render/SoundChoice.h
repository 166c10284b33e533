#pragma once

#include <filesystem>
#include <string>
#include <vector>

#include "host/parameters/PresentSettings.h"
#include "host/state/Preset.h"

namespace Quorvan::Tools {

/// The preset that a user names, a factory preset or a file. Puts what had to be mended in it into
/// warnings, a sentence each. Throws Failure where there is no such preset, or it can't be read.
Host::Preset LoadPreset(const std::string& nameOrFile, const Host::ParameterCatalog& catalog,
                        std::vector<std::string>& warnings);

/// A preset with single parameters put elsewhere, as --set asks.
struct SoundChoice {
    Host::Preset preset;
    std::vector<Host::ParameterValue> levers;  ///< writes to the shell's own, such as "Bypass"

    /// What was asked for, for messages.
    struct Assigned {
        uint32_t index = 0;
        std::string text;
    };
    std::vector<Assigned> assigned;
    Host::Preset asFound;  ///< the preset ahead of the assignments

    /// assignments are texts NAME=POSITION. Those that decide what the names and texts of others
    /// mean go first, such as the mode ahead of "Grain Size". Throws Failure for one that makes no
    /// sense.
    static SoundChoice Make(Host::Preset preset, const std::vector<std::string>& assignments,
                            const Host::ParameterCatalog& catalog);
    /// Where the parameters stand with that sound.
    Host::PresentSettings Settings(const Host::ParameterCatalog& catalog) const;
    /// And with the preset alone.
    Host::PresentSettings PresetSettings(const Host::ParameterCatalog& catalog) const;
};

}  // namespace Quorvan::Tools

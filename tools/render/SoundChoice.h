#pragma once

#include <filesystem>
#include <string>
#include <vector>

#include "host/parameters/ParameterCatalog.h"
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
    Host::TextContext context;                 ///< how texts read with that sound

    /// assignments are texts NAME=POSITION. Throws Failure for one that makes no sense.
    static SoundChoice Make(Host::Preset preset, const std::vector<std::string>& assignments,
                            const Host::ParameterCatalog& catalog);
};

}  // namespace Quorvan::Tools

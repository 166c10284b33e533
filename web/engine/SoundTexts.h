#pragma once

#include <nlohmann/json.hpp>
#include <string>
#include <string_view>

#include "host/engine/Engine.h"
#include "host/state/Issue.h"
#include "host/state/Preset.h"

namespace Quorvan::Web {

/// What a preset says beside its positions, as a page takes it.
nlohmann::json TextsOf(const Host::Preset& preset);

/// Presets and states as texts, to the positions of the desk and back. Holds a processor that never
/// sounds, so that all of it goes the way that it goes with a sounding one.
class SoundTexts {
public:
    /// Reads a preset or a state. Answers, as JSON, its kind, its texts and warnings, or the
    /// problem for which it is none; then the positions stay.
    std::string Read(std::string_view json);
    /// A preset of the positions; wanted is JSON with name, description, tags and tempo.
    std::string WritePreset(std::string_view wanted);
    /// A state of the positions.
    std::string WriteState();
    /// Seconds for which the positions let a sound go on after its input, an endless one for a
    /// sensible stretch.
    double TailSeconds(double tempo);

private:
    std::string Take(const Host::Preset& texts, const char* kind,
                     const std::vector<Host::Issue>& issues);
    /// The processor, standing at the positions.
    Host::Engine& Synced();

    Host::Engine engine{0};
};

}  // namespace Quorvan::Web

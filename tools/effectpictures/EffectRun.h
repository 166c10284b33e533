#pragma once

#include <array>
#include <string>
#include <vector>

#include "host/parameters/ParameterCatalog.h"

namespace Quorvan::Tools {

/// A setting of an effect: a name without the slot's prefix, and a text such as "1 kHz".
struct Setting {
    std::string name, text;
};

/// An effect alone: a whole processor whose mix lets through the dry sound only, with the effect in
/// the slot behind it.
class EffectRun {
public:
    static constexpr double kRate = 48000.0;
    using Stereo = std::array<std::vector<float>, 2>;

    explicit EffectRun(std::string effectName, std::vector<Setting> wanted = {},
                       double wetShare = 1.0);

    /// What the effect makes of the same sound on both channels, without the processor's latency.
    Stereo Play(const std::vector<float>& input) const;
    /// The answer to a single sample of 1 that comes once everything has settled.
    Stereo ImpulseResponse(double seconds) const;

private:
    std::string effect;
    std::vector<Setting> settings;
    double wet;
    Host::ParameterCatalog catalog;
};

}  // namespace Quorvan::Tools

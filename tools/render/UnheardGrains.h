#pragma once

#include <cstdint>
#include <optional>
#include <set>
#include <string>

#include "host/parameters/PresentSettings.h"

namespace Quorvan::Tools {

/// Watches for grains that nobody hears: settings of them are asked for while the mix is dry from
/// beginning to end, or the beat mode has no step to start them on.
class UnheardGrains {
public:
    explicit UnheardGrains(const Host::ParameterCatalog& parameters);

    /// Somebody asks for a setting.
    void Ask(uint32_t index);
    void See(const Host::PresentSettings& settings);
    /// Nothing where all is well.
    std::optional<std::string> DryMixSentence() const;
    std::optional<std::string> SilentBeatSentence() const;
    /// Whether a parameter decides that.
    bool Decides(uint32_t index) const;

private:
    bool IsOfGrains(uint32_t index) const;
    bool HasStep(const Host::PresentSettings& settings) const;

    const Host::ParameterCatalog& catalog;
    uint32_t mix, feedback, granularMode, steps, firstStep;  ///< indices
    std::set<uint32_t> asked;
    bool isMixed = false;
    bool isBeatSilent = false, isBeatHeard = false;
};

}  // namespace Quorvan::Tools

#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "host/parameters/PresentSettings.h"
#include "tools/render/SlotPlaces.h"

namespace Quorvan::Tools {

/// What has to stand where for a setting to be heard: the effect that it belongs to in its slot,
/// the mode that it belongs to, a routing of the modulation that it is part of.
class SettingNeeds {
public:
    explicit SettingNeeds(const Host::ParameterCatalog& parameters);

    /// Why a parameter is without effect with these settings, as a sentence that says what would
    /// give it one; nothing where it has one.
    std::optional<std::string> Missing(uint32_t index, const Host::PresentSettings& settings) const;
    /// Whether a parameter is that of an effect in a slot.
    bool IsOfEffect(uint32_t index) const { return needs[index] && needs[index]->isEffect; }
    /// Whether a parameter decides that about others.
    bool IsDecider(uint32_t index) const { return isDecider[index] || places.Decides(index); }

private:
    /// The parameters of an effect, or of a mode, and what they need.
    struct Need {
        uint32_t selector = 0;  ///< index
        uint32_t choices = 0;   ///< bit n: choice n will do
        uint32_t modes = ~0u;   ///< granular modes in which they need it, likewise
        bool isEffect = false;
    };
    void AddModes();
    void AddSources();
    std::string OfNeed(const Need& need, const Host::PresentSettings& settings) const;
    std::string OtherSlot(const Need& need, const Host::PresentSettings& settings) const;
    std::optional<std::string> OfFamily(uint32_t index,
                                        const Host::PresentSettings& settings) const;

    const Host::ParameterCatalog& catalog;
    std::vector<std::optional<Need>> needs;        ///< by index
    std::vector<std::optional<uint32_t>> sources;  ///< of modulation, likewise
    std::vector<bool> isDecider;                   ///< likewise
    uint32_t granularMode, gateSource;             ///< indices
    SlotPlaces places;
};

}  // namespace Quorvan::Tools

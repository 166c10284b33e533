#include "host/parameters/SlotEffects.h"

#include <algorithm>
#include <array>
#include <string_view>

namespace Quorvan::Host {

namespace {

/// Names of the effects' parameters behind "FX1_", in the order of the choices of "ModuleType"
/// behind None.
constexpr std::array<std::string_view, 9> kEffects{
    "MultiModeFilter_", "MultiDist_", "Compressor_", "Delay_", "OctaverDelay_",
    "TapeEcho_",        "Chorus_",    "Flanger_",    "Reverb_"};

/// Choice of the effect that the rest of a full name begins with; 0 where it begins with none.
uint32_t ChoiceOf(std::string_view rest) {
    const auto found = std::find_if(kEffects.begin(), kEffects.end(),
                                    [&](std::string_view name) { return rest.starts_with(name); });
    return found == kEffects.end() ? 0 : static_cast<uint32_t>(found - kEffects.begin()) + 1;
}

}  // namespace

SlotEffects::SlotEffects(std::span<const ParameterInfo> infos) : effects(infos.size()) {
    for (const std::string_view slot : {"FX1_", "FX2_"}) {
        const auto isSelector = [&](const ParameterInfo& info) {
            return info.name.starts_with(slot) && info.name.ends_with("_ModuleType");
        };
        const auto selector = std::find_if(infos.begin(), infos.end(), isSelector);
        for (const ParameterInfo& info : infos) {
            const std::string_view name = info.name;
            if (const uint32_t choice =
                    name.starts_with(slot) ? ChoiceOf(name.substr(slot.size())) : 0)
                effects[info.index] = {selector->index, choice};
        }
    }
}

}  // namespace Quorvan::Host

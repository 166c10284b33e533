#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <vector>

#include "host/parameters/ParameterInfo.h"

namespace Quorvan::Host {

/// Which parameters are those of an effect, and of which slot.
class SlotEffects {
public:
    /// The effect is there while the selector, "FX1_ModuleType" or "FX2_ModuleType", stands at the
    /// choice.
    struct Effect {
        uint32_t selector = 0;  ///< index
        uint32_t choice = 0;
    };

    /// infos are those of all parameters, in index order.
    explicit SlotEffects(std::span<const ParameterInfo> infos);

    /// The effect that a parameter belongs to; nothing for those of no effect.
    const std::optional<Effect>& Of(uint32_t index) const { return effects[index]; }

private:
    std::vector<std::optional<Effect>> effects;  ///< by index
};

}  // namespace Quorvan::Host

#pragma once

#include <array>

#include "host/engine/EngineListener.h"
#include "host/parameters/ModulationNames.h"

namespace Quorvan::C {

/// Keeps the latest state of all modulation that the processor reports while somebody looks.
class ModulationWatch final : public Host::EngineListener {
public:
    void OnBlobChange(uint32_t index, std::span<const uint8_t> data) override;

    std::array<float, Host::kModulationSources> sources{};            ///< -1..1
    std::array<float, Host::kModulationDestinations> destinations{};  ///< 0..1
};

}  // namespace Quorvan::C

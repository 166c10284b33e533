#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "host/parameters/PresentSettings.h"

namespace Quorvan::Tools {

/// An effect slot that is watched for an effect that nobody ever hears, since its dry/wet stands at
/// 0 and nothing modulates it.
class DrySlot {
public:
    /// slot counts from 0.
    DrySlot(const Host::ParameterCatalog& parameters, uint32_t slot);

    void See(const Host::PresentSettings& settings);
    /// Nothing where all is well.
    std::optional<std::string> Sentence() const;

private:
    uint32_t IndexOf(const char* name) const;

    const Host::ParameterCatalog& catalog;
    std::string prefix;
    uint32_t dryWetRow;
    std::string dryEffect;  ///< the first one that stayed dry
    bool isHeard = false;
};

}  // namespace Quorvan::Tools

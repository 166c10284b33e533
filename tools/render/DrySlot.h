#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "host/parameters/PresentSettings.h"
#include "tools/render/SlotPlaces.h"

namespace Quorvan::Tools {

/// An effect slot that is watched for an effect that nobody ever hears: its dry/wet stands at 0 and
/// nothing modulates it, or it sits in the feedback loop and that is closed.
class DrySlot {
public:
    /// watched counts from 0.
    DrySlot(const Host::ParameterCatalog& parameters, uint32_t watched);

    void See(const Host::PresentSettings& settings);
    /// Nothing where all is well.
    std::optional<std::string> Sentence() const;

private:
    uint32_t IndexOf(const char* name) const;
    bool IsLoopClosed(const Host::PresentSettings& settings) const;

    const Host::ParameterCatalog& catalog;
    SlotPlaces places;
    uint32_t slot;
    std::string prefix;
    std::string dryEffect;     ///< the first one that stayed dry
    std::string closedEffect;  ///< the first one that sat in a closed loop
    bool isHeard = false;
};

}  // namespace Quorvan::Tools

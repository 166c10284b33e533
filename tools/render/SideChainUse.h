#pragma once

#include <optional>
#include <string>

#include "host/parameters/PresentSettings.h"

namespace Quorvan::Tools {

/// Whether anything in the course of a render listens to the side-chain: the envelope follower has
/// to, and something has to be routed from it.
class SideChainUse {
public:
    explicit SideChainUse(const Host::ParameterCatalog& parameters);

    void See(const Host::PresentSettings& settings);
    /// Nothing where all is well. file is the side-chain's.
    std::optional<std::string> Sentence(const std::string& file) const;
    /// Whether a parameter is the follower's choice of what it listens to.
    bool IsSource(uint32_t index) const { return index == source; }
    /// For one that is asked to listen to a side-chain where none is given.
    std::optional<std::string> MissingSentence() const;

private:
    const Host::ParameterCatalog& catalog;
    uint32_t source;  ///< index of the follower's choice of what it listens to
    bool isFollowed = false, isUsed = false;
};

}  // namespace Quorvan::Tools

#include "tools/render/SideChainUse.h"

#include "host/parameters/Sentence.h"
#include "tools/render/RoutingReader.h"

namespace Quorvan::Tools {

namespace {
constexpr uint32_t kFollower = 0;  // source of modulation
}  // namespace

SideChainUse::SideChainUse(const Host::ParameterCatalog& parameters)
    : catalog(parameters), source(parameters.Find("Envelope Follower Source").value()) {}

void SideChainUse::See(const Host::PresentSettings& settings) {
    const bool follows = settings.Choice(source) != 0;
    isFollowed = isFollowed || follows;
    isUsed = isUsed || (follows && MovesAnything(settings, kFollower));
}

std::optional<std::string> SideChainUse::Sentence(const std::string& file) const {
    if (isUsed)
        return std::nullopt;
    const std::string start = "Nothing listens to the side-chain " + Host::Quoted(file) + ": ";
    const Host::ParameterInfo& info = catalog[source];
    if (!isFollowed)
        return start + "the envelope follower takes the input. Try --set " +
               Host::Quoted(info.title + "=" + info.choices.back()) + ".";
    return start + "the envelope follower is routed to nothing. " +
           RoutingAdvice(catalog, kFollower);
}

std::optional<std::string> SideChainUse::MissingSentence() const {
    if (!isUsed)
        return std::nullopt;
    return "No side-chain is given, so that the envelope follower takes the input all the same. "
           "Give one with --sidechain FILE.";
}

}  // namespace Quorvan::Tools

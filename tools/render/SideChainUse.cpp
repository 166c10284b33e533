#include "tools/render/SideChainUse.h"

#include "host/parameters/Sentence.h"
#include "tools/render/RoutingReader.h"

namespace Quorvan::Tools {

namespace {
constexpr uint32_t kFollower = 0;    // source of modulation
constexpr uint32_t kExampleRow = 0;  // destination
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
    const std::string& cell = catalog[Host::AmountIndex(kFollower, kExampleRow)].title;
    return start + "the envelope follower is routed to nothing. Try --set " +
           Host::Quoted(cell + "=50 %") + " --set " + Host::Quoted(cell + " On=On") + ".";
}

}  // namespace Quorvan::Tools

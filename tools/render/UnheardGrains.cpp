#include "tools/render/UnheardGrains.h"

#include <algorithm>
#include <array>
#include <string_view>

#include "host/parameters/Sentence.h"
#include "tools/render/RoutingReader.h"

namespace Quorvan::Tools {

namespace {

constexpr uint32_t kMixRow = 0;  // destination
constexpr uint32_t kBeat = 2;    // granular mode
constexpr uint32_t kMostSteps = 16;
/// Groups whose parameters reach the output through the wet signal alone.
constexpr std::array<std::string_view, 6> kGroups{"Granular",          "Grain Clock",
                                                  "Beat Sequencer",    "Spatializer",
                                                  "Spatializer LFO X", "Spatializer LFO Y"};

}  // namespace

UnheardGrains::UnheardGrains(const Host::ParameterCatalog& parameters)
    : catalog(parameters),
      mix(parameters.Find("Dry / Wet").value()),
      feedback(parameters.Find("Feedback").value()),
      granularMode(parameters.Find("MoteWeaver_GranularMode").value()),
      steps(parameters.Find("MoteWeaver_StepSequencerGranular_NbSteps").value()),
      firstStep(parameters.Find("MoteWeaver_StepSequencerGranular_StepOnOff1").value()) {}

bool UnheardGrains::IsOfGrains(uint32_t index) const {
    return index == feedback ||
           std::find(kGroups.begin(), kGroups.end(), catalog[index].group) != kGroups.end();
}

bool UnheardGrains::Decides(uint32_t index) const {
    return index == mix || index == granularMode || index == steps ||
           (index >= firstStep && index < firstStep + kMostSteps);
}

void UnheardGrains::Ask(uint32_t index) {
    if (IsOfGrains(index))
        asked.insert(index);
}

bool UnheardGrains::HasStep(const Host::PresentSettings& settings) const {
    for (uint32_t step = 0; step <= settings.Choice(steps); ++step)
        if (settings.Choice(firstStep + step) != 0)
            return true;
    return false;
}

void UnheardGrains::See(const Host::PresentSettings& settings) {
    isMixed = isMixed || settings.Position(mix) > 0.0f || IsMoved(settings, kMixRow);
    if (settings.Choice(granularMode) == kBeat)
        (HasStep(settings) ? isBeatHeard : isBeatSilent) = true;
}

std::optional<std::string> UnheardGrains::DryMixSentence() const {
    if (isMixed || asked.empty())
        return std::nullopt;
    const std::string& title = catalog[mix].title;
    const std::string more = asked.size() > 1 ? " and what else is asked of the grains are" : " is";
    return Host::Quoted(catalog[*asked.begin()].title) + more +
           " not heard: " + Host::Quoted(title) +
           " stands at 0 % and nothing modulates it. Try --set " + Host::Quoted(title + "=50 %") +
           ".";
}

std::optional<std::string> UnheardGrains::SilentBeatSentence() const {
    if (!isBeatSilent || isBeatHeard)
        return std::nullopt;
    return "The beat mode starts no grains: none of its steps is on. Try --set " +
           Host::Quoted(catalog[firstStep].title + "=On") + ".";
}

}  // namespace Quorvan::Tools

#pragma once

#include <array>
#include <filesystem>
#include <optional>
#include <string>
#include <vector>

#include "tools/render/Automation.h"
#include "tools/render/DrySlot.h"
#include "tools/render/SideChainUse.h"
#include "tools/render/SoundChoice.h"
#include "tools/render/UnheardGrains.h"
#include "tools/render/UnheardSettings.h"

namespace Quorvan::Tools {

/// Finds what a render is asked for and that can have no effect, by the course of its settings
/// alone. What is brought to effect at any later time is none of it.
class WarningFinder {
public:
    WarningFinder(const Host::ParameterCatalog& parameters, const SoundChoice& chosen,
                  const Automation& automated);

    /// Follows the whole course. sideChain is the file that is given as one.
    std::vector<std::string> Find(const SettingsCourse& course,
                                  const std::optional<std::filesystem::path>& sideChain);

private:
    void AskOfPreset();
    void AskOfAssignments(const Host::PresentSettings& settings);
    bool Decides(uint32_t index) const;
    void Follow(const SettingsCourse& course);
    void See(const Host::PresentSettings& settings);

    const Host::ParameterCatalog& catalog;
    const SoundChoice& sound;
    const Automation& automation;
    SettingNeeds needs;
    UnheardSettings unheard;
    std::array<DrySlot, 2> slots;
    UnheardGrains grains;
    SideChainUse sideChainUse;
};

/// The sentence for points of an automation that begin behind the end of the output, if there are
/// any. end is in seconds.
std::optional<std::string> WritesBehindEnd(const Automation& automation,
                                           const SettingsCourse& course, double rate, double end);

/// The sentence for so many writes that the engine had no room for.
std::optional<std::string> LostWrites(uint64_t count);

}  // namespace Quorvan::Tools

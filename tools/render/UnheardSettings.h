#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "tools/render/SettingNeeds.h"
#include "tools/render/SettingsCourse.h"

namespace Quorvan::Tools {

/// A setting that somebody asked for.
struct AskedSetting {
    uint32_t index = 0;
    std::string source;  ///< who asks: '--set', 'Preset "x"', 'Automation "a.csv", line 3'
};

/// Settings that are asked for and never have an effect, since their effect or mode is not there.
/// One that gets its effect at any time behind it is fine.
class UnheardSettings {
public:
    explicit UnheardSettings(const SettingNeeds& rules) : needs(rules) {}

    /// From now on a setting is asked for.
    void Ask(AskedSetting asked, const Host::PresentSettings& settings);
    /// The settings have changed: what is in force now is heard.
    void See(const Host::PresentSettings& settings);
    /// A sentence for those that nothing heard, one for all of the same source and reason.
    std::vector<std::string> Sentences(const Host::ParameterCatalog& catalog) const;

private:
    struct Waiting {
        AskedSetting asked;
        std::string reason;
    };
    const SettingNeeds& needs;
    std::vector<Waiting> waiting;
};

}  // namespace Quorvan::Tools

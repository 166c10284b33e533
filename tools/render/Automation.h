#pragma once

#include <filesystem>
#include <string>
#include <string_view>
#include <vector>

#include "host/parameters/PresentSettings.h"
#include "tools/render/AutomationPoint.h"
#include "tools/render/Meter.h"
#include "tools/render/SettingsCourse.h"
#include "tools/render/TempoMap.h"

namespace Quorvan::Tools {

class AutomationReader;

/// A list of parameter writes and tempos over time, from a file in JSON or CSV. docs/renderer.md
/// shows both.
class Automation {
public:
    Automation() = default;
    /// Throws Failure, with the place in the file, for what makes no sense. The meter counts bars.
    static Automation Load(const std::filesystem::path& path, const Meter& meter);
    static Automation ReadCsv(const std::string& name, std::string_view text,
                              const Meter& meter = {});
    static Automation ReadJson(const std::string& name, std::string_view text,
                               const Meter& meter = {});

    /// The song with all changes of its tempo; start is the song without them.
    TempoMap Tempos(const TempoMap& start) const;
    /// Everything else. Writes come in order of their frames, and of the file where those are
    /// equal. Beats count in song; what lies ahead of frame 0 lands there. Names and texts are read
    /// with settings and the writes so far. Throws Failure for what their moments rule out.
    SettingsCourse Resolve(const TempoMap& song, Host::PresentSettings settings,
                           const Host::ParameterCatalog& catalog) const;

    const std::vector<AutomationPoint>& Points() const { return points; }
    /// How messages call a point: 'Automation "a.csv", line 3'.
    std::string Place(size_t point) const;
    /// What was found on reading that can't be meant so, a sentence each.
    const std::vector<std::string>& Warnings() const { return warnings; }

private:
    Automation(std::string fileName, AutomationReader&& reader);

    std::string name;  ///< of the file
    std::vector<AutomationPoint> points;
    std::vector<std::string> warnings;
};

}  // namespace Quorvan::Tools

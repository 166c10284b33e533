#pragma once

#include <cstdint>
#include <filesystem>
#include <string>
#include <string_view>
#include <vector>

#include "host/parameters/PresentSettings.h"

namespace Quorvan::Tools {

/// One write of an automation file.
struct AutomationPoint {
    double time = 0.0;
    bool isBeat = false;    ///< time counts quarter notes of the song in place of seconds
    std::string parameter;  ///< name, whose meaning may follow the modes of its moment
    std::string position;   ///< as ReadPosition takes it
    std::string where;      ///< place in the file, for messages: "line 3"
};

/// A parameter write at a frame of the input.
struct TimedWrite {
    uint64_t frame = 0;
    uint32_t index = 0;
    float position = 0.0f;
};

/// A list of parameter writes over time, from a file in JSON or CSV. docs/renderer.md shows both.
class Automation {
public:
    Automation() = default;
    /// Throws Failure, with the place in the file, for what makes no sense.
    static Automation Load(const std::filesystem::path& path,
                           const Host::ParameterCatalog& catalog);
    static Automation ReadCsv(const std::string& name, std::string_view text,
                              const Host::ParameterCatalog& catalog);
    static Automation ReadJson(const std::string& name, std::string_view text,
                               const Host::ParameterCatalog& catalog);

    /// The writes in order of their frames, and of the file where those are equal. Beats count in
    /// the song, which is at startBeat at frame 0; what lies ahead of frame 0 lands there. Names
    /// and texts are read with settings and the writes so far.
    std::vector<TimedWrite> Resolve(double rate, double tempo, double startBeat,
                                    Host::PresentSettings settings,
                                    const Host::ParameterCatalog& catalog) const;

    const std::vector<AutomationPoint>& Points() const { return points; }

private:
    explicit Automation(std::string fileName) : name(std::move(fileName)) {}

    std::string name;  ///< of the file
    std::vector<AutomationPoint> points;
};

}  // namespace Quorvan::Tools

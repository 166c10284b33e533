#pragma once

#include <array>
#include <string>
#include <string_view>
#include <vector>

#include <nlohmann/json.hpp>

#include "tools/render/AutomationPoint.h"
#include "tools/render/AutomationTime.h"

namespace Quorvan::Tools {

/// Reads the entries of an automation file and checks what can be checked without their moments,
/// on which names and positions hang.
/// Throws Failure, with the place in the file, for what makes no sense.
class AutomationReader {
public:
    AutomationReader(std::string fileName, const Meter& songMeter);

    void ReadCsv(std::string_view text);
    void ReadJson(std::string_view text);

    /// How messages call a place in the file: 'Automation "a.csv", line 3'.
    static std::string PlaceText(const std::string& name, const std::string& where);

    std::vector<AutomationPoint> points;
    std::vector<std::string> warnings;  ///< what can't be meant so, a sentence each

private:
    /// Time, parameter, position and ramp.
    using Texts = std::array<std::string, 4>;
    void Add(const std::string& where, const Texts& texts, TimeUnit bare);

    /// Warns of keys that nobody reads.
    void TellStrangers(const nlohmann::json& entry, const std::string& where);
    /// Warns of how many there are beyond those that were named.
    void TellRest(size_t count, const char* rest);

    size_t strangers = 0, early = 0;  ///< unknown keys; times below 0
    std::string name;
    Meter meter;
};

}  // namespace Quorvan::Tools

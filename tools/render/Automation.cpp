#include "tools/render/Automation.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <optional>

#include <nlohmann/json.hpp>

#include "host/parameters/NumberText.h"
#include "host/parameters/Sentence.h"
#include "tools/render/AutomationTime.h"
#include "tools/render/PositionText.h"
#include "tools/support/CsvLine.h"
#include "tools/support/Failure.h"
#include "tools/support/TextFile.h"

namespace Quorvan::Tools {

namespace {

using Json = nlohmann::json;

[[noreturn]] void Refuse(const std::string& name, const std::string& where,
                         const std::string& sentence) {
    throw Failure(ExitCode::Input,
                  "Automation " + Host::Quoted(name) + ", " + where + ": " + sentence);
}

/// Puts a point together from its three texts.
AutomationPoint MakePoint(const std::string& name, const std::string& where,
                          const std::array<std::string, 3>& texts, bool bareIsBeat,
                          const Host::ParameterCatalog& catalog,
                          const Host::PresentSettings& initial) {
    const std::optional<AutomationTime> time = AutomationTime::Read(texts[0], bareIsBeat);
    if (!time)
        Refuse(name, where,
               Host::Quoted(texts[0]) + " is no time. Write seconds, or beats as \"4 beats\".");
    const NamedParameter parameter = FindWritable(catalog, texts[1], initial);
    if (!parameter.index)
        Refuse(name, where, parameter.problem);
    return {time->time, time->isBeat, texts[1], texts[2], where};
}

std::string JsonText(const Json& value) {
    return value.is_string() ? value.get<std::string>() : value.dump();
}

/// The three texts of one entry in JSON, an object or a list of three.
std::optional<std::array<std::string, 3>> EntryTexts(const Json& entry, bool& isBeat) {
    isBeat = false;
    if (entry.is_array() && entry.size() == 3)
        return std::array{JsonText(entry[0]), JsonText(entry[1]), JsonText(entry[2])};
    if (!entry.is_object())
        return std::nullopt;
    isBeat = entry.contains("beats");
    const char* const time = isBeat ? "beats" : "seconds";
    if (!entry.contains(time) || !entry.contains("parameter") || !entry.contains("position"))
        return std::nullopt;
    return std::array{JsonText(entry[time]), JsonText(entry["parameter"]),
                      JsonText(entry["position"])};
}

/// The head line of a table says what its times count.
bool IsHead(const std::vector<std::string>& fields, bool& isBeat) {
    const std::string first = Host::Lower(fields.front());
    isBeat = first.starts_with("beat");
    return isBeat || first.starts_with("second") || first == "time";
}

}  // namespace

Automation Automation::Load(const std::filesystem::path& path,
                            const Host::ParameterCatalog& catalog) {
    const std::string text = ReadTextFile(path);
    const size_t first = text.find_first_not_of(" \t\r\n\xef\xbb\xbf");
    const bool isJson = first != std::string::npos && (text[first] == '[' || text[first] == '{');
    return isJson ? ReadJson(path.string(), text, catalog) : ReadCsv(path.string(), text, catalog);
}

Automation Automation::ReadCsv(const std::string& name, std::string_view text,
                               const Host::ParameterCatalog& catalog) {
    Automation automation(name);
    const Host::PresentSettings initial(catalog);
    bool isBeat = false;
    bool mayBeHead = true;
    size_t number = 0;
    for (size_t at = 0; at < text.size();) {
        const size_t end = std::min(text.find('\n', at), text.size());
        const std::vector<std::string> fields = SplitCsvLine(text.substr(at, end - at));
        at = end + 1;
        const std::string where = "line " + std::to_string(++number);
        if (fields.empty())
            continue;
        if (mayBeHead && IsHead(fields, isBeat)) {
            mayBeHead = false;
            continue;
        }
        mayBeHead = false;
        if (fields.size() != 3)
            Refuse(name, where,
                   "It has " + std::to_string(fields.size()) +
                       " fields. Write time, parameter name, position.");
        automation.points.push_back(
            MakePoint(name, where, {fields[0], fields[1], fields[2]}, isBeat, catalog, initial));
    }
    return automation;
}

Automation Automation::ReadJson(const std::string& name, std::string_view text,
                                const Host::ParameterCatalog& catalog) {
    Automation automation(name);
    const Host::PresentSettings initial(catalog);
    const Json json = Json::parse(text, nullptr, false, true);
    if (json.is_discarded())
        throw Failure(ExitCode::Input, "Automation " + Host::Quoted(name) +
                                           " is no valid JSON. Check its quotes, commas and "
                                           "brackets.");
    if (!json.is_array())
        throw Failure(ExitCode::Input,
                      "Automation " + Host::Quoted(name) + " has to be a list in [ ].");
    for (size_t i = 0; i < json.size(); ++i) {
        const std::string where = "entry " + std::to_string(i + 1);
        bool isBeat = false;
        const auto texts = EntryTexts(json[i], isBeat);
        if (!texts)
            Refuse(name, where,
                   "Write {\"seconds\": 1.5, \"parameter\": \"Feedback\", \"position\": 0.7}, or "
                   "\"beats\" in place of \"seconds\".");
        automation.points.push_back(MakePoint(name, where, *texts, isBeat, catalog, initial));
    }
    return automation;
}

std::vector<TimedWrite> Automation::Resolve(double rate, double tempo, double startBeat,
                                            Host::PresentSettings settings,
                                            const Host::ParameterCatalog& catalog) const {
    struct Placed {
        uint64_t frame;
        const AutomationPoint* point;
    };
    // Times beyond this are beyond any file, and would overflow the count of frames.
    constexpr double kLastFrame = 9.0e15;
    std::vector<Placed> placed;
    for (const AutomationPoint& point : points) {
        const double seconds = point.isBeat ? (point.time - startBeat) * 60.0 / tempo : point.time;
        const double frame = std::clamp(std::round(seconds * rate), 0.0, kLastFrame);
        placed.push_back({static_cast<uint64_t>(frame), &point});
    }
    std::stable_sort(placed.begin(), placed.end(),
                     [](const Placed& a, const Placed& b) { return a.frame < b.frame; });
    std::vector<TimedWrite> writes;
    for (const auto& [frame, point] : placed) {
        const uint32_t index = catalog.Resolve(point->parameter, settings).value();
        const Host::TextResult result =
            ReadPosition(catalog, index, point->position, settings.Texts());
        if (!result.position)
            Refuse(name, point->where, result.problem);
        settings.Put(index, *result.position);
        writes.push_back({frame, index, *result.position});
    }
    return writes;
}

}  // namespace Quorvan::Tools

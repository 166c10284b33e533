#include "tools/render/Automation.h"

#include <algorithm>
#include <cmath>
#include <unordered_map>
#include <utility>

#include "tools/render/AutomationReader.h"
#include "tools/render/PositionText.h"
#include "tools/render/TempoPlan.h"
#include "tools/support/Failure.h"
#include "tools/support/TextFile.h"

namespace Quorvan::Tools {

namespace {

/// A point and the frame of its moment.
struct Placed {
    uint64_t frame;
    const AutomationPoint* point;
};

/// All points but the tempos, in order.
std::vector<Placed> PlacedOn(const TempoMap& song, const std::vector<AutomationPoint>& points) {
    std::vector<Placed> placed;
    for (const AutomationPoint& point : points) {
        if (point.tempo > 0.0)
            continue;
        const double frame = point.isBeat ? song.FrameAt(point.time) : point.time * song.Rate();
        placed.push_back(
            {static_cast<uint64_t>(std::clamp(std::round(frame), 0.0, kLastFrame)), &point});
    }
    std::stable_sort(placed.begin(), placed.end(),
                     [](const Placed& a, const Placed& b) { return a.frame < b.frame; });
    return placed;
}

}  // namespace

Automation::Automation(std::string fileName, AutomationReader&& reader)
    : name(std::move(fileName)),
      points(std::move(reader.points)),
      warnings(std::move(reader.warnings)) {}

Automation Automation::Load(const std::filesystem::path& path, const Meter& meter) {
    const std::string text = ReadTextFile(path);
    const size_t first = text.find_first_not_of(" \t\r\n\xef\xbb\xbf");
    const bool isJson = first != std::string::npos && (text[first] == '[' || text[first] == '{');
    return isJson ? ReadJson(path.string(), text, meter) : ReadCsv(path.string(), text, meter);
}

Automation Automation::ReadCsv(const std::string& name, std::string_view text, const Meter& meter) {
    AutomationReader reader(name, meter);
    reader.ReadCsv(text);
    return {name, std::move(reader)};
}

Automation Automation::ReadJson(const std::string& name, std::string_view text,
                                const Meter& meter) {
    AutomationReader reader(name, meter);
    reader.ReadJson(text);
    return {name, std::move(reader)};
}

std::string Automation::Place(size_t point) const {
    return AutomationReader::PlaceText(name, points[point].where);
}

TempoMap Automation::Tempos(const TempoMap& start) const {
    std::vector<const AutomationPoint*> tempos;
    for (const AutomationPoint& point : points)
        if (point.tempo > 0.0)
            tempos.push_back(&point);
    return TempoPlan(start).Make(std::move(tempos));
}

SettingsCourse Automation::Resolve(const TempoMap& song, Host::PresentSettings settings,
                                   const Host::ParameterCatalog& catalog) const {
    SettingsCourse course{settings, {}};
    std::unordered_map<uint32_t, uint64_t> lastFrames;  // of each parameter's last point
    for (const auto& [frame, point] : PlacedOn(song, points)) {
        const auto number = static_cast<size_t>(point - points.data());
        const NamedParameter named = FindWritable(catalog, point->parameter, settings);
        if (!named.index)
            throw Failure(ExitCode::Input, Place(number) + ": " + named.problem);
        const uint32_t index = *named.index;
        const Host::TextResult result =
            ReadPosition(catalog, index, point->position, settings.Texts());
        if (!result.position)
            throw Failure(ExitCode::Input, Place(number) + ": " + result.problem);
        TimedWrite write{frame, index, *result.position, number};
        if (point->ramp != Ramp::Step && frame > lastFrames[index]) {
            write.ramp = point->ramp;
            write.frames = frame - lastFrames[index];
            write.frame = lastFrames[index];
            write.from = settings.Position(index);
        }
        course.writes.push_back(write);
        lastFrames[index] = frame;
        settings.Put(index, *result.position);
    }
    std::stable_sort(course.writes.begin(), course.writes.end(),
                     [](const TimedWrite& a, const TimedWrite& b) { return a.frame < b.frame; });
    return course;
}

}  // namespace Quorvan::Tools

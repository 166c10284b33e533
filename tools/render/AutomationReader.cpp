#include "tools/render/AutomationReader.h"

#include <algorithm>
#include <optional>
#include <utility>

#include "host/parameters/NameDistance.h"
#include "host/parameters/NumberText.h"
#include "host/parameters/Sentence.h"
#include "tools/render/JsonList.h"
#include "tools/render/PositionText.h"
#include "tools/support/CsvLine.h"
#include "tools/support/Failure.h"

namespace Quorvan::Tools {

namespace {

using Json = nlohmann::json;

[[noreturn]] void Refuse(const std::string& name, const std::string& where,
                         const std::string& sentence) {
    throw Failure(ExitCode::Input, AutomationReader::PlaceText(name, where) + ": " + sentence);
}

/// So many warnings of a kind get a sentence of their own.
constexpr size_t kNamed = 5;
constexpr const char* kMoreEarly = " more times lie ahead of the start, and count there.";

/// The members of an entry that tell its time, the one that counts first.
struct TimeMember {
    const char* name;
    TimeUnit unit;
};
constexpr std::array<TimeMember, 3> kTimeMembers{
    {{"bars", TimeUnit::Bars}, {"beats", TimeUnit::Beats}, {"seconds", TimeUnit::Seconds}}};

std::string JsonText(const Json& value) {
    return value.is_string() ? value.get<std::string>() : value.dump();
}
std::string MemberText(const Json& entry, const char* member) {
    return entry.contains(member) ? JsonText(entry[member]) : std::string();
}

/// The head line of a table says what its times count.
std::optional<TimeUnit> UnitOfHead(const std::string& first) {
    const std::string word = Host::Lower(first);
    if (word.starts_with("second") || word == "time")
        return TimeUnit::Seconds;
    if (word.starts_with("beat"))
        return TimeUnit::Beats;
    if (word.starts_with("bar"))
        return TimeUnit::Bars;
    return std::nullopt;
}

/// Beats per minute of "140" or "140 BPM"; nothing where text is no tempo that a song can have.
std::optional<double> TempoOf(std::string_view text) {
    std::string number = Host::Lower(Host::Trim(text));
    if (number.ends_with("bpm"))
        number.resize(number.size() - 3);
    const std::optional<double> tempo = PlainNumber(Host::Trim(number));
    return tempo && *tempo >= 1.0 && *tempo <= 999.0 ? tempo : std::nullopt;
}

}  // namespace

AutomationReader::AutomationReader(std::string fileName, const Meter& songMeter)
    : name(std::move(fileName)), meter(songMeter) {}

std::string AutomationReader::PlaceText(const std::string& name, const std::string& where) {
    return "Automation " + Host::Quoted(name) + ", " + where;
}

void AutomationReader::ReadCsv(std::string_view text) {
    std::optional<TimeUnit> head;
    size_t number = 0;
    for (size_t at = 0; at < text.size();) {
        const size_t end = std::min(text.find('\n', at), text.size());
        const std::vector<std::string> fields = SplitCsvLine(text.substr(at, end - at));
        at = end + 1;
        const std::string where = "line " + std::to_string(++number);
        if (fields.empty())
            continue;
        if (!head) {
            const std::optional<TimeUnit> unit = UnitOfHead(fields.front());
            head = unit.value_or(TimeUnit::Seconds);
            if (unit)
                continue;
        }
        if (fields.size() != 3 && fields.size() != 4)
            Refuse(
                name, where,
                "It has " + std::to_string(fields.size()) +
                    " fields. Write time, parameter name, position, and a ramp if you want one.");
        Add(where, {fields[0], fields[1], fields[2], fields.size() == 4 ? fields[3] : ""}, *head);
    }
    TellRest(early, kMoreEarly);
}

void AutomationReader::ReadJson(std::string_view text) {
    const JsonList list("Automation " + Host::Quoted(name), text);
    for (const auto& [entry, where] : list.Entries()) {
        if (entry.is_array() && (entry.size() == 3 || entry.size() == 4)) {
            Add(where,
                {JsonText(entry[0]), JsonText(entry[1]), JsonText(entry[2]),
                 entry.size() == 4 ? JsonText(entry[3]) : ""},
                TimeUnit::Seconds);
            continue;
        }
        TellStrangers(entry, where);
        std::vector<TimeMember> times;
        for (const TimeMember& member : kTimeMembers)
            if (entry.is_object() && entry.contains(member.name))
                times.push_back(member);
        if (times.empty() || !entry.contains("parameter") || !entry.contains("position"))
            Refuse(name, where,
                   "Write {\"seconds\": 1.5, \"parameter\": \"Feedback\", \"position\": 0.7}, or "
                   "\"beats\" or \"bars\" in place of \"seconds\".");
        if (times.size() > 1)
            warnings.push_back(PlaceText(name, where) + ": " + Host::Quoted(times[0].name) +
                               " counts, not " + Host::Quoted(times[1].name) +
                               ". Write only one of them.");
        Add(where,
            {JsonText(entry[times[0].name]), JsonText(entry["parameter"]),
             JsonText(entry["position"]), MemberText(entry, "ramp")},
            times[0].unit);
    }
    TellRest(strangers, " more keys are none of an entry. They are left out.");
    TellRest(early, kMoreEarly);
}

void AutomationReader::TellStrangers(const Json& entry, const std::string& where) {
    static const std::vector<std::string> known{"seconds",   "beats",    "bars",
                                                "parameter", "position", "ramp"};
    if (!entry.is_object())
        return;
    for (auto member = entry.begin(); member != entry.end(); ++member) {
        if (std::find(known.begin(), known.end(), member.key()) != known.end() ||
            strangers++ >= kNamed)
            continue;
        const std::string nearest = Host::DidYouMean(Host::NearestNames(member.key(), known, 1));
        warnings.push_back(PlaceText(name, where) + ": " + Host::Quoted(member.key()) +
                           " is no key of an entry and is left out." +
                           (nearest.empty() ? "" : " " + nearest));
    }
}

void AutomationReader::TellRest(size_t count, const char* rest) {
    if (count > kNamed)
        warnings.push_back("Automation " + Host::Quoted(name) + ": " +
                           std::to_string(count - kNamed) + rest);
}

void AutomationReader::Add(const std::string& where, const Texts& texts, TimeUnit bare) {
    const std::optional<AutomationTime> time = AutomationTime::Read(texts[0], bare, meter);
    if (!time)
        Refuse(name, where,
               Host::Quoted(texts[0]) +
                   " is no time. Write seconds, beats as \"4 beats\", or bar "
                   "and beat as \"5:3\", whose beats count from 1 to " +
                   std::to_string(meter.beats) + ".");
    // A song may begin at a negative beat, the sound never ahead of its start.
    if (!time->isBeat && time->time < 0.0 && early++ < kNamed)
        warnings.push_back(PlaceText(name, where) + ": " + Host::Quoted(texts[0]) +
                           " lies ahead of the start, and counts there. Times go from 0.");
    const std::optional<Ramp> ramp = ReadRamp(texts[3]);
    if (!ramp)
        Refuse(name, where,
               Host::Quoted(texts[3]) + " is no ramp. Write \"linear\" or \"exponential\".");
    AutomationPoint point{time->time, time->isBeat, texts[1], texts[2], *ramp, where};
    if (Host::Lower(Host::Trim(texts[1])) == "tempo") {
        const std::optional<double> tempo = TempoOf(texts[2]);
        if (!tempo)
            Refuse(name, where,
                   Host::Quoted(texts[2]) + " is no tempo. Write 1 to 999 BPM, such as \"140\".");
        point.tempo = *tempo;
    }
    points.push_back(std::move(point));
}

}  // namespace Quorvan::Tools

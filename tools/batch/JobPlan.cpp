#include "tools/batch/JobPlan.h"

#include <charconv>
#include <initializer_list>
#include <utility>

#include <nlohmann/json.hpp>

#include "host/parameters/ParameterCatalog.h"
#include "host/parameters/Sentence.h"
#include "tools/batch/JobParser.h"
#include "tools/batch/Wildcards.h"
#include "tools/render/SoundChoice.h"
#include "tools/support/Failure.h"
#include "tools/support/Fingerprint.h"
#include "tools/support/LineReader.h"

namespace Quorvan::Tools {

namespace {

constexpr uint64_t kMostSeeds = 1000000;

[[noreturn]] void Refuse(const std::string& sentence) { throw Failure(ExitCode::Usage, sentence); }

std::vector<std::string> Split(const std::string& text, char separator) {
    std::vector<std::string> parts;
    size_t from = 0;
    for (size_t at = 0; at <= text.size(); ++at)
        if (at == text.size() || text[at] == separator) {
            parts.push_back(text.substr(from, at - from));
            from = at + 1;
        }
    return parts;
}

std::pair<std::string, std::string> Halves(const std::string& option, const std::string& text) {
    const size_t sign = text.find('=');
    if (sign == std::string::npos || sign == 0)
        Refuse(option + " " + Host::Quoted(text) + ": the \"=\" is missing.");
    return {text.substr(0, sign), text.substr(sign + 1)};
}

/// Every choice of one position from each of the lists.
std::vector<std::vector<std::string>> Combine(const std::vector<std::string>& lists) {
    std::vector<std::vector<std::string>> all{{}};
    for (const std::string& list : lists) {
        const auto [name, positions] = Halves("--vary", list);
        std::vector<std::vector<std::string>> longer;
        for (const std::vector<std::string>& before : all)
            for (const std::string& position : Split(positions, '|')) {
                longer.push_back(before);
                longer.back().push_back(std::string(name).append("=").append(position));
            }
        all = std::move(longer);
    }
    return all;
}

std::string CsvField(const std::string& text) {
    std::string field(1, '"');
    for (const char letter : text) {
        if (letter == '\n' || letter == '\r')
            Refuse(Host::Quoted(text) + " can't stand in CSV. Write JSON Lines.");
        field += letter;
        if (letter == '"')
            field += letter;
    }
    return field + '"';
}

std::string CsvLine(const JobWords& words, bool isHead) {
    std::string line;
    for (const auto& [word, value] : words)
        line += (line.empty() ? "" : ",") + (isHead ? word : CsvField(value));
    return line + "\n";
}

std::string PresetName(const std::string& preset) {
    return std::filesystem::path(preset).stem().string();
}

}  // namespace

std::vector<uint64_t> ReadSeeds(const std::string& text) {
    std::vector<uint64_t> seeds;
    for (const std::string& part : text.empty() ? std::vector<std::string>{} : Split(text, ',')) {
        uint64_t first = 0;
        const char* const end = part.data() + part.size();
        auto read = std::from_chars(part.data(), end, first);
        uint64_t last = first;
        if (read.ec == std::errc() && read.ptr != end && *read.ptr == '-')
            read = std::from_chars(read.ptr + 1, end, last);
        if (read.ec != std::errc() || read.ptr != end || last < first)
            Refuse("--seeds: " + Host::Quoted(part) +
                   " is no seed and no range of seeds such as 1-4.");
        if (last - first >= kMostSeeds - seeds.size())
            Refuse("--seeds names more than a million of them.");
        for (uint64_t seed = first; seed - first <= last - first; ++seed)
            seeds.push_back(seed);
    }
    return seeds;
}

JobPlan::JobPlan(PlanSettings wanted)
    : settings(std::move(wanted)), pattern(settings.name), variants(Combine(settings.variants)) {
    const Host::ParameterCatalog catalog;
    if (settings.presets.empty())
        settings.presets.emplace_back("init");
    settings.presets = Wildcards::Presets(settings.presets);
    std::vector<std::string> ignored;
    for (const std::string& preset : settings.presets)
        LoadPreset(preset, catalog, ignored);
}

void JobPlan::ForEachInput(const std::function<void(const std::string&)>& take) const {
    for (const std::string& input : settings.inputs) {
        if (!StandardStreams::IsMeant(input)) {
            for (const std::string& file : Wildcards::Files(input))
                take(file);
            continue;
        }
        LineReader lines(input);
        while (const auto line = lines.Next())
            if (!line->empty())
                take(std::string(*line));
    }
}

uint64_t JobPlan::Write(AtomicOutput& file) {
    ForEachInput([&](const std::string& input) { WriteInput(input, file); });
    if (count == 0)
        Refuse("There is no input, so there are no jobs.");
    return count;
}

void JobPlan::WriteInput(const std::string& input, AtomicOutput& file) {
    for (const std::string& preset : settings.presets)
        for (size_t variant = 0; variant < variants.size(); ++variant) {
            NamePattern::Job job{input, PresetName(preset), {}, variant + 1, 0};
            if (settings.seeds.empty())
                WriteJob(job, preset, variants[variant], file);
            for (const uint64_t seed : settings.seeds) {
                job.seed = std::to_string(seed);
                WriteJob(job, preset, variants[variant], file);
            }
        }
}

void JobPlan::WriteJob(const NamePattern::Job& job, const std::string& preset,
                       const std::vector<std::string>& variant, AtomicOutput& file) {
    NamePattern::Job numbered = job;
    numbered.number = ++count;
    const std::string output = pattern.Of(numbered);
    if (!names.Insert(Fingerprint().Add(output).Value()))
        Refuse("Two jobs would write to " + Host::Quoted(output) +
               ". Let --name tell them apart, by {folder}, {preset}, {seed}, {variant} or "
               "{number}.");
    JobWords words{{"input", job.input.string()}, {"output", output}, {"preset", preset}};
    if (!job.seed.empty())
        words.emplace_back("seed", job.seed);
    for (const auto* list :
         std::initializer_list<const std::vector<std::string>*>{&settings.assignments, &variant})
        for (const std::string& assignment : *list)
            words.emplace_back("set", assignment);
    for (const std::string& word : settings.words)
        words.push_back(Halves("--word", word));
    if (count == 1)  // all others have the same words
        JobParser().Read(words);
    std::string text = count == 1 && settings.asCsv ? CsvLine(words, true) : std::string();
    text += Line(words);
    file.Write(text.data(), static_cast<int64_t>(text.size()));
}

std::string JobPlan::Line(const JobWords& words) const {
    if (settings.asCsv)
        return CsvLine(words, false);
    nlohmann::ordered_json json;
    for (const auto& [word, value] : words)
        if (word == "set")
            json[word].push_back(value);
        else
            json[word] = value;
    return json.dump(-1, ' ', false, nlohmann::ordered_json::error_handler_t::replace) + "\n";
}

}  // namespace Quorvan::Tools

#include "tools/batch/JobParser.h"

#include <algorithm>
#include <array>
#include <optional>

#include "host/parameters/NameDistance.h"
#include "host/parameters/NumberText.h"
#include "host/parameters/Sentence.h"
#include "tools/support/Failure.h"
#include "tools/support/StandardStreams.h"

namespace Quorvan::Tools {

namespace {

std::optional<bool> TruthOf(const std::string& value) {
    const std::string word = Host::Lower(value);
    for (const char* const yes : {"true", "yes", "1"})
        if (word == yes)
            return true;
    for (const char* const no : {"false", "no", "0"})
        if (word == no)
            return false;
    return std::nullopt;
}

void RefuseStreams(const RenderSettings& settings) {
    const std::array<std::optional<std::filesystem::path>, 8> files{
        settings.input,         settings.output,     settings.sideChain, settings.picture,
        settings.modulationCsv, settings.savePreset, settings.automation};
    for (const auto& file : files)
        if (file && StandardStreams::IsMeant(*file))
            throw Failure(ExitCode::Usage,
                          "Jobs of a batch go from files to files; \"-\" is none. Name a file.");
}

}  // namespace

/// The command line's library remembers the order of all options that it has ever met.
void JobParser::Renew() {
    constexpr unsigned kMostUses = 1000;
    if (app != nullptr && ++uses < kMostUses)
        return options->Forget();
    uses = 0;
    app = std::make_unique<CLI::App>();
    app->set_help_flag();
    options = std::make_unique<RenderOptions>(*app);
}

RenderSettings JobParser::Read(const JobWords& words) {
    for (const char* const needed : {"input", "output"})
        if (std::none_of(words.begin(), words.end(),
                         [needed](const auto& word) { return word.first == needed; }))
            throw Failure(ExitCode::Usage, std::string("The job has no ") + needed + ". Name one.");
    Renew();
    std::vector<std::string> line = Line(words);
    std::reverse(line.begin(), line.end());  // as the library takes them
    try {
        app->parse(line);
    } catch (const CLI::ParseError& wrong) {
        throw Failure(ExitCode::Usage, wrong.what());
    }
    RenderSettings settings = options->Settings();
    RefuseStreams(settings);
    settings.progress = false;
    settings.isOneOfMany = true;
    return settings;
}

std::vector<std::string> JobParser::Line(const JobWords& words) {
    std::vector<std::string> line, inputs;
    for (const auto& [word, value] : words)
        if (word == "input")
            inputs.push_back(value);
        else
            AddWord(line, word, value);
    line.emplace_back("--");  // a file may be called "-x.wav"
    line.insert(line.end(), inputs.begin(), inputs.end());
    return line;
}

void JobParser::AddWord(std::vector<std::string>& line, const std::string& word,
                        const std::string& value) {
    const std::string name = std::string("--").append(word);
    const CLI::Option* const option = word.empty() ? nullptr : app->get_option_no_throw(name);
    if (option == nullptr)
        RefuseWord(word);
    if (option->get_items_expected_max() > 0) {
        if (!value.empty())
            line.push_back(name + "=" + value);
        return;
    }
    const std::optional<bool> isOn = TruthOf(value);
    if (!isOn)
        throw Failure(ExitCode::Usage, Host::Quoted(word) + " is a switch: true or false, not " +
                                           Host::Quoted(value) + ".");
    if (*isOn)
        line.push_back(name);
}

void JobParser::RefuseWord(const std::string& word) const {
    std::vector<std::string> names{"input"};
    for (const CLI::Option* option : app->get_options())
        for (const std::string& name : option->get_lnames())
            names.push_back(name);
    std::string sentence = "A job has no word ";
    sentence.append(Host::Quoted(word)).append(". ");
    sentence += Host::DidYouMean(Host::NearestNames(word, names, 2));
    throw Failure(ExitCode::Usage,
                  sentence.append(" \"tesserae render --help\" lists them, with dashes ahead."));
}

std::string JobParser::Canonical(const JobWords& words) {
    JobWords sorted = words;
    std::stable_sort(sorted.begin(), sorted.end(),
                     [](const auto& one, const auto& other) { return one.first < other.first; });
    std::string text;
    for (const auto& [word, value] : sorted)
        if (word != "force" && !value.empty())
            text.append(word).append("=").append(value).append("\n");
    return text;
}

}  // namespace Quorvan::Tools

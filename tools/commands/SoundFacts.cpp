#include "tools/commands/SoundFacts.h"

#include <charconv>
#include <sstream>

#include <nlohmann/json.hpp>

#include "host/parameters/Sentence.h"
#include "tools/audio/AudioReader.h"
#include "tools/support/Numbers.h"
#include "tools/support/StandardStreams.h"
#include "tools/support/TextTable.h"

namespace Quorvan::Tools {

namespace {

using Json = nlohmann::ordered_json;

/// For a heading.
std::string Capital(std::string word) {
    if (!word.empty() && word[0] >= 'a' && word[0] <= 'z')
        word[0] = static_cast<char>(word[0] - 'a' + 'A');
    return word;
}

Json MadeJson(const Recipe& recipe) {
    Json made{{"version", recipe.version}, {"preset", recipe.ValueOf("--preset")}};
    const std::string seed = recipe.ValueOf("--seed");
    uint64_t number = 0;
    if (std::from_chars(seed.data(), seed.data() + seed.size(), number).ec == std::errc())
        made["seed"] = number;
    made["options"] = recipe.options;
    return made;
}

}  // namespace

SoundFacts::SoundFacts(const std::filesystem::path& file) : name(file) {
    const AudioReader reader(file);
    format = reader.FormatText();
    rate = reader.Rate();
    channels = reader.Channels();
    frames = reader.Frames();
    const SoundTags read = reader.Tags();
    tags = read.Named();
    comment = read.Comment();
    recipe = Recipe::Find(comment);
}

std::string SoundFacts::Text() const {
    TextTable table({"File", StandardStreams::Heading(name)});
    table.Add({"Format", format});
    table.Add({"Rate", Fixed(rate, 0) + " Hz"});
    table.Add({"Channels", std::to_string(channels)});
    if (frames)
        table.Add({"Length", Fixed(static_cast<double>(*frames) / rate, 3) + " s (" +
                                 Grouped(*frames) + " frames)"});
    for (const auto& [kind, text] : tags)
        table.Add({Capital(kind), Host::Visible(text)});
    if (recipe) {
        table.Add({"Made by", "Tesserae " + recipe->version});
        table.Add({"Preset", recipe->ValueOf("--preset")});
        table.Add({"Seed", recipe->ValueOf("--seed")});
        table.Add({"Options", recipe->OptionsText()});
    } else if (!comment.empty()) {
        table.Add({"Comment", Host::Visible(comment)});
    }
    std::ostringstream text;
    table.Print(text);
    return text.str();
}

std::string SoundFacts::Json() const {
    nlohmann::ordered_json json{
        {"file", name.string()}, {"format", format}, {"rate", rate}, {"channels", channels}};
    if (frames) {
        json["frames"] = *frames;
        json["seconds"] = static_cast<double>(*frames) / rate;
    }
    json["tags"] = tags;
    json["comment"] = comment;
    if (recipe)
        json["made"] = MadeJson(*recipe);
    return json.dump(2, ' ', false, nlohmann::ordered_json::error_handler_t::replace) + "\n";
}

}  // namespace Quorvan::Tools

#include "tools/render/Recipe.h"

#include <algorithm>
#include <charconv>
#include <filesystem>

namespace Quorvan::Tools {

namespace {

constexpr std::string_view kProgram = "Tesserae ";
constexpr std::string_view kSpecial = "\"\\$`";  // within double quotes

std::string Plain(double number) {
    char text[32];
    return {text, std::to_chars(text, text + sizeof text, number).ptr};
}

bool NeedsQuotes(const std::string& word) {
    constexpr std::string_view kHarmless =
        "abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789_-+=.,:/@%";
    return word.empty() || word.find_first_not_of(kHarmless) != std::string::npos;
}

std::string Quoted(const std::string& word) {
    std::string quoted(1, '"');
    for (const char letter : word) {
        if (kSpecial.find(letter) != std::string_view::npos)
            quoted += '\\';
        // The recipe is one line, whatever a file is called.
        quoted += static_cast<unsigned char>(letter) < ' ' ? '?' : letter;
    }
    return quoted + '"';
}

/// Takes apart what OptionsText joined.
std::vector<std::string> Split(std::string_view text) {
    std::vector<std::string> words;
    bool inWord = false, inQuotes = false;
    for (size_t i = 0; i < text.size(); ++i) {
        if (text[i] == ' ' && !inQuotes) {
            inWord = false;
            continue;
        }
        if (!inWord)
            words.emplace_back();
        inWord = true;
        if (text[i] == '"')
            inQuotes = !inQuotes;
        else
            words.back() += text[i] == '\\' && i + 1 < text.size() ? text[++i] : text[i];
    }
    return words;
}

/// "Tesserae VERSION: OPTIONS".
std::optional<Recipe> Read(std::string_view line) {
    const size_t colon = line.find(": --");
    if (!line.starts_with(kProgram) || colon == std::string_view::npos)
        return std::nullopt;
    Recipe recipe;
    recipe.version = line.substr(kProgram.size(), colon - kProgram.size());
    recipe.options = Split(line.substr(colon + 2));
    return recipe;
}

}  // namespace

Recipe Recipe::Of(const RenderSettings& settings, uint64_t seed) {
    using Path = std::filesystem::path;
    Recipe recipe{TESSERAE_VERSION, {}};
    const auto add = [&recipe](const char* option, const std::string& value) {
        recipe.options.insert(recipe.options.end(), {option, value});
    };
    const auto file = [&add](const char* option, const std::optional<Path>& path) {
        if (path)
            add(option, path->filename().string());
    };
    if (settings.rawRate) {
        add("--raw-rate", std::to_string(*settings.rawRate));
        add("--raw-channels", std::to_string(settings.rawChannels));
    }
    add("--preset", Path(settings.preset).filename().string());
    add("--seed", std::to_string(seed));
    for (const std::string& assignment : settings.assignments)
        add("--set", assignment);
    file("--automation", settings.automation);
    file("--sidechain", settings.sideChain);
    if (settings.tempo)
        add("--tempo", Plain(*settings.tempo));
    if (!settings.playing)
        recipe.options.emplace_back("--stop");
    if (settings.startBeat != 0.0)
        add("--start-beat", Plain(settings.startBeat));
    if (settings.automation && !(settings.meter == Meter{}))
        add("--meter", settings.meter.Text());
    if (settings.tail)
        add("--tail", Plain(*settings.tail));
    if (settings.tailFade)
        add("--tail-fade", Plain(*settings.tailFade));
    if (settings.rate)
        add("--rate", std::to_string(*settings.rate));
    if (settings.mono)
        recipe.options.emplace_back("--mono");
    if (!settings.format.empty())
        add("--format", settings.format);
    return recipe;
}

std::optional<Recipe> Recipe::Find(std::string_view comment) {
    std::optional<Recipe> last;
    for (size_t at = 0; at < comment.size();) {
        const size_t end = std::min(comment.find('\n', at), comment.size());
        if (auto recipe = Read(comment.substr(at, end - at)))
            last = std::move(recipe);
        at = end + 1;
    }
    return last;
}

std::string Recipe::Line() const { return std::string(kProgram) + version + ": " + OptionsText(); }

std::string Recipe::ValueOf(std::string_view option) const {
    const auto found = std::find(options.begin(), options.end(), option);
    return found == options.end() || found + 1 == options.end() ? std::string() : found[1];
}

std::string Recipe::OptionsText() const {
    std::string text;
    for (const std::string& option : options)
        text += (text.empty() ? "" : " ") + (NeedsQuotes(option) ? Quoted(option) : option);
    return text;
}

}  // namespace Quorvan::Tools

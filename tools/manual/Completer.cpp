#include "tools/manual/Completer.h"

#include <algorithm>
#include <set>
#include <sstream>

#include "host/parameters/ModulationNames.h"
#include "host/parameters/NumberText.h"
#include "host/parameters/ParameterCatalog.h"
#include "presets/FactoryPresets.h"
#include "tools/audio/AudioFormat.h"

namespace Quorvan::Tools {

namespace {

using Candidates = std::vector<Completer::Candidate>;

Candidates Presets() {
    Candidates all;
    for (const Host::FactoryPreset& preset : Host::FactoryPresets())
        all.push_back({std::string(preset.id), ""});
    return all;
}

/// Names for people with the "=" that follows, those that several share once. Cells of the matrix
/// are too many to choose among; presets name them as routings.
Candidates Assignments() {
    Candidates all;
    std::set<std::string> shared;
    const Host::ParameterCatalog catalog;
    for (const Host::ParameterInfo& info : catalog.All()) {
        if (info.role != Host::ParameterRole::Setting || info.name.starts_with("Modulations_"))
            continue;
        const std::string common = catalog.CommonName(info.index);
        if (!common.empty() && shared.insert(common).second)
            all.push_back({common + "=", "the one in force"});
        all.push_back({info.title + "=", info.name});
    }
    return all;
}

/// Names behind those that stand there already, with their commas.
Candidates Destinations(const std::string& before) {
    Candidates all;
    for (uint32_t row = 0; row < Host::kModulationDestinations; ++row)
        all.push_back({before + Host::DestinationName(row), ""});
    return all;
}

const OptionText* FindOption(const CommandText& command, const std::string& name) {
    const auto found = std::find_if(command.options.begin(), command.options.end(),
                                    [&](const OptionText& option) { return option.Has(name); });
    return found == command.options.end() ? nullptr : &*found;
}

/// The option that takes the word behind it.
const OptionText* TakerOf(const CommandText& command, const std::string& word) {
    const OptionText* const option = FindOption(command, word);
    return option != nullptr && !option->value.empty() ? option : nullptr;
}

Candidates Fitting(Candidates all, const std::string& typed) {
    const std::string start = Host::Lower(typed);
    std::erase_if(all, [&](const Completer::Candidate& candidate) {
        return candidate.word != Completer::kFiles &&
               !Host::Lower(candidate.word).starts_with(start);
    });
    return all;
}

}  // namespace

Completer::Completer(const CLI::App& program)
    : whole(DescribeCommand(program)), commands(DescribeCommands(program)) {}

const CommandText* Completer::Find(const std::string& name) const {
    const auto found = std::find_if(commands.begin(), commands.end(),
                                    [&](const CommandText& one) { return one.name == name; });
    return found == commands.end() ? nullptr : &*found;
}

Candidates Completer::Commands() const {
    Candidates all;
    for (const CommandText& command : commands)
        all.push_back({command.name, command.description});
    all.push_back({"help", "Print what there is, or the help of a command"});
    all.push_back({"version", "Print the version"});
    return all;
}

Candidates Completer::OptionsOf(const CommandText& command) {
    Candidates all;
    for (const OptionText& option : command.options)
        if (!option.IsArgument())
            all.push_back({option.names.back(), option.description});
    return all;
}

/// Goes by what the option says that it takes.
Candidates Completer::Values(const OptionText& option, const std::string& typed) {
    if (option.value.starts_with("NAME=POSITION"))
        return Assignments();
    if (option.value == "NAME,...")
        return Destinations(typed.substr(0, typed.rfind(',') + 1));
    Candidates all;
    std::string choice;
    if (option.value == "FORMAT")
        for (const std::string& name : AudioFormat::Names())
            all.push_back({name, ""});
    if (option.value.find('|') != std::string::npos && option.value != "FILE|NAME")
        for (std::istringstream words(option.value); std::getline(words, choice, '|');)
            all.push_back({choice, ""});
    if (option.value == "SHELL")
        all = {{"bash", ""}, {"zsh", ""}, {"fish", ""}};
    if (option.value == "NAME" || option.value == "FILE|NAME")
        all = Presets();
    if (option.value.starts_with("FILE") || option.value == "IN" || option.value == "OUT")
        all.push_back({kFiles, ""});
    return all;
}

/// The argument whose turn it is behind words, which are the command's.
const OptionText* Completer::ArgumentAt(const CommandText& command,
                                        const std::vector<std::string>& words) {
    size_t place = 0;
    for (size_t i = 0; i < words.size(); ++i) {
        if (TakerOf(command, words[i]) != nullptr)
            ++i;
        else if (!words[i].starts_with("-") || words[i] == "-")
            ++place;
    }
    const bool isThere = place < command.options.size() && command.options[place].IsArgument();
    return isThere ? &command.options[place] : nullptr;
}

Candidates Completer::Complete(const std::vector<std::string>& words) const {
    const std::string& typed = words.back();
    if (words.size() <= 2)
        return Fitting(typed.starts_with("-") ? OptionsOf(whole) : Commands(), typed);
    if (words[1] == "help")
        return words.size() == 3 ? Fitting(Commands(), typed) : Candidates{};
    const CommandText* const command = Find(words[1]);
    if (command == nullptr)
        return {};
    const std::string& before = words[words.size() - 2];
    if (const OptionText* const option = TakerOf(*command, before); option && words.size() > 3)
        return Fitting(Values(*option, typed), typed);
    if (typed.starts_with("-"))
        return Fitting(OptionsOf(*command), typed);
    const OptionText* const argument = ArgumentAt(*command, {words.begin() + 2, words.end() - 1});
    return argument != nullptr ? Fitting(Values(*argument, typed), typed)
                               : Fitting(OptionsOf(*command), typed);
}

}  // namespace Quorvan::Tools

#include "tools/manual/CommandTexts.h"

#include <algorithm>

namespace Quorvan::Tools {

namespace {

OptionText Describe(const CLI::Option& option) {
    OptionText text;
    for (const std::string& name : option.get_snames())
        text.names.push_back("-" + name);
    for (const std::string& name : option.get_lnames())
        text.names.push_back("--" + name);
    if (option.get_items_expected_max() > 0) {
        // The library tells both in one: "HZ:1000 to 768000".
        const std::string type = option.get_type_name();
        const size_t colon = type.find(':');
        text.value = type.substr(0, colon);
        if (colon != std::string::npos)
            text.range = type.substr(colon + 1);
    }
    text.description = option.get_description();
    text.isRequired = option.get_required();
    return text;
}

}  // namespace

bool OptionText::Has(const std::string& name) const {
    return std::find(names.begin(), names.end(), name) != names.end();
}

CommandText DescribeCommand(const CLI::App& command) {
    CommandText text{command.get_name(), command.get_description(), command.get_footer(), {}};
    for (const CLI::Option* option : command.get_options())
        if (!option->get_group().empty())
            text.options.push_back(Describe(*option));
    std::stable_partition(text.options.begin(), text.options.end(),
                          [](const OptionText& option) { return option.IsArgument(); });
    return text;
}

std::vector<CommandText> DescribeCommands(const CLI::App& program) {
    std::vector<CommandText> commands;
    for (const CLI::App* command : program.get_subcommands({}))
        if (!command->get_group().empty())
            commands.push_back(DescribeCommand(*command));
    return commands;
}

}  // namespace Quorvan::Tools

#pragma once

#include <string>
#include <vector>

#include <CLI/CLI.hpp>

namespace Quorvan::Tools {

/// An option or an argument as the command line describes it.
struct OptionText {
    std::vector<std::string> names;  ///< "-o", "--output"; none for an argument without a name
    std::string value;               ///< what it takes: "FILE", "HZ"; empty for a switch
    std::string range;               ///< of numbers: "1 to 999"
    std::string description;
    bool isRequired = false;

    bool IsArgument() const { return names.empty(); }
    bool Has(const std::string& name) const;
};

/// A command of the program, or the program itself.
struct CommandText {
    std::string name;
    std::string description;
    std::string footer;
    std::vector<OptionText> options;  ///< arguments first
};

/// Reads off the command line's own tables; what those hide is left out.
CommandText DescribeCommand(const CLI::App& command);
/// The commands of a program in their order.
std::vector<CommandText> DescribeCommands(const CLI::App& program);

}  // namespace Quorvan::Tools

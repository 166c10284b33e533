#pragma once

#include <string>
#include <vector>

#include <CLI/CLI.hpp>

#include "tools/manual/CommandTexts.h"

namespace Quorvan::Tools {

/// What could stand at the end of a command line that is being typed: commands, options, and what
/// options take. All of it comes from the command line's own tables.
class Completer {
public:
    /// One of the words that fit.
    struct Candidate {
        std::string word;  ///< the whole of it
        std::string description;
    };
    /// Ends with this word where a file fits too.
    static constexpr const char* kFiles = ":files";

    explicit Completer(const CLI::App& program);
    /// words are those of the line, the first the program's name, the last the one under way.
    std::vector<Candidate> Complete(const std::vector<std::string>& words) const;

private:
    using Candidates = std::vector<Candidate>;

    const CommandText* Find(const std::string& name) const;
    Candidates Commands() const;
    static Candidates Values(const OptionText& option, const std::string& typed);
    static Candidates OptionsOf(const CommandText& command);
    static const OptionText* ArgumentAt(const CommandText& command,
                                        const std::vector<std::string>& words);

    CommandText whole;
    std::vector<CommandText> commands;
};

}  // namespace Quorvan::Tools

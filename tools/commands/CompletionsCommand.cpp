#include "tools/commands/CompletionsCommand.h"

#include <iostream>

#include "host/parameters/Sentence.h"
#include "tools/manual/CompletionScripts.h"
#include "tools/support/Failure.h"

namespace Quorvan::Tools {

CompletionsCommand::CompletionsCommand(CLI::App& program)
    : Command(program, "completions", "Print the script that lets a shell complete command lines") {
    Options().add_option("shell", shell, "bash, zsh or fish")->required()->type_name("SHELL");
    Options().footer(
        "Example:\n"
        "  tesserae completions bash > ~/.local/share/bash-completion/completions/tesserae");
}

ExitCode CompletionsCommand::Run() {
    const std::string script = CompletionScript(shell);
    if (script.empty())
        throw Failure(ExitCode::Usage, "There are no completions for " + Host::Quoted(shell) +
                                           ". Known are bash, zsh and fish.");
    std::cout << script;
    return ExitCode::Success;
}

}  // namespace Quorvan::Tools

#pragma once

#include <CLI/CLI.hpp>

#include "tools/support/ExitCode.h"

namespace Quorvan::Tools {

/// One of the program's commands. It puts itself and its options on the command line when it is
/// made, and runs where the user has asked for it.
class Command {
public:
    Command(CLI::App& program, const char* name, const char* description)
        : subcommand(program.add_subcommand(name, description)) {}
    virtual ~Command() = default;
    Command(const Command&) = delete;
    Command& operator=(const Command&) = delete;

    bool IsAsked() const { return subcommand->parsed(); }
    /// Throws Failure where it can't do what it is asked for.
    virtual ExitCode Run() = 0;
    /// Throws Failure where what was printed did not arrive, such as on a full disk.
    static void CheckPrinted();

protected:
    CLI::App& Options() { return *subcommand; }

private:
    CLI::App* subcommand;
};

}  // namespace Quorvan::Tools

#pragma once

#include <string>

#include <CLI/CLI.hpp>

namespace Quorvan::Tools {

/// The program's manual page as man(7) sets it, from the command line's own tables.
std::string ManualPage(const CLI::App& program);

}  // namespace Quorvan::Tools

#pragma once

#include <CLI/CLI.hpp>

namespace Quorvan::Tools {

/// Lets a number from low to high pass. CLI::Range would also take "nan".
CLI::Validator NumberFrom(double low, double high);

/// Lets a decimal whole number of 64 bits without a sign pass. On its own the command line would
/// wrap "-1", cut what is too large and read "010" as eight.
CLI::Validator WholeNumber();

}  // namespace Quorvan::Tools

#pragma once

#include <cstdint>
#include <string>

namespace Quorvan::Tools {

/// number with so many decimals, whatever the locale.
std::string Fixed(double number, int decimals);
/// number with a comma between groups of three digits.
std::string Grouped(uint64_t number);

}  // namespace Quorvan::Tools

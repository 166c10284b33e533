#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace Quorvan::Host {

/// The choice that a text means: its name in any case, or the beginning of one name only. Nothing
/// where there is none, or more than one.
std::optional<uint32_t> FindChoice(std::span<const std::string> names, std::string_view text);
/// All choices whose names begin with a text that is not empty.
std::vector<uint32_t> ChoicesBegunWith(std::span<const std::string> names, std::string_view text);
/// "Off" and "On" by their names and by "no", "yes", "false", "true", "0" and "1".
std::optional<uint32_t> FindSwitch(std::string_view text);
/// What a sentence about a wrong choice advises: 'Use "A", "B" or "C".' Long lists are cut short.
std::string ChoiceAdvice(std::span<const std::string> names);

}  // namespace Quorvan::Host

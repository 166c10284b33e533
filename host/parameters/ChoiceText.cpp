#include "host/parameters/ChoiceText.h"

#include <array>

#include "host/parameters/NumberText.h"
#include "host/parameters/Sentence.h"

namespace Quorvan::Host {

std::optional<uint32_t> FindChoice(std::span<const std::string> names, std::string_view text) {
    const std::string wanted = Lower(Trim(text));
    for (uint32_t i = 0; i < names.size(); ++i)
        if (!wanted.empty() && Lower(names[i]) == wanted)
            return i;
    const std::vector<uint32_t> begun = ChoicesBegunWith(names, text);
    return begun.size() == 1 ? std::optional(begun.front()) : std::nullopt;
}

std::vector<uint32_t> ChoicesBegunWith(std::span<const std::string> names, std::string_view text) {
    const std::string wanted = Lower(Trim(text));
    std::vector<uint32_t> begun;
    for (uint32_t i = 0; i < names.size(); ++i)
        if (!wanted.empty() && Lower(names[i]).starts_with(wanted))
            begun.push_back(i);
    return begun;
}

std::optional<uint32_t> FindSwitch(std::string_view text) {
    static constexpr std::array<std::string_view, 4> kOff{"off", "no", "false", "0"};
    static constexpr std::array<std::string_view, 4> kOn{"on", "yes", "true", "1"};
    const std::string wanted = Lower(Trim(text));
    for (size_t i = 0; i < kOff.size(); ++i) {
        if (wanted == kOff[i])
            return 0;
        if (wanted == kOn[i])
            return 1;
    }
    return std::nullopt;
}

std::string ChoiceAdvice(std::span<const std::string> names) {
    constexpr size_t kShown = 16;
    if (names.size() > kShown)
        return "Use one of " + Quoted(names[0]) + ", " + Quoted(names[1]) + " and so on to " +
               Quoted(names.back()) + ".";
    std::string advice = "Use ";
    for (size_t i = 0; i < names.size(); ++i) {
        if (i > 0)
            advice += i + 1 == names.size() ? " or " : ", ";
        advice += Quoted(names[i]);
    }
    return advice + ".";
}

}  // namespace Quorvan::Host

#include "host/parameters/ChoiceText.h"

#include <array>

#include "host/parameters/NumberText.h"
#include "host/parameters/Sentence.h"

namespace Quorvan::Host {

std::optional<uint32_t> FindChoice(std::span<const std::string> names, std::string_view text) {
    const std::string wanted = Lower(Trim(text));
    if (wanted.empty())
        return std::nullopt;
    std::optional<uint32_t> begun;  // the last one that wanted begins
    uint32_t begunCount = 0;
    for (uint32_t i = 0; i < names.size(); ++i) {
        const std::string name = Lower(names[i]);
        if (name == wanted)
            return i;
        if (name.starts_with(wanted)) {
            begun = i;
            ++begunCount;
        }
    }
    return begunCount == 1 ? begun : std::nullopt;
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

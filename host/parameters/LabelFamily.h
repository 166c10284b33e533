#pragma once

#include <algorithm>
#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace Quorvan::Host {

/// One label that stands for several parameters, of which modes and switches put one in force:
/// "Grain Size" is a time, a note value or a ratio. Each of them has a label of its own as well.
struct LabelFamily {
    /// A parameter that stands at one of some choices.
    struct Condition {
        uint32_t selector = 0;  ///< index
        uint32_t choices = 0;   ///< bit n: choice n
    };
    /// A member is in force where all conditions hold and no earlier case did.
    struct Case {
        uint32_t member = 0;  ///< index
        std::vector<Condition> conditions;
    };

    std::string group;
    std::string label;
    std::vector<Case> cases;  ///< the last one has no conditions

    /// Index of the parameter that the label means where selectors stand at the choices that
    /// choiceOf tells of their indices. Allocates nothing.
    template <class ChoiceOf>
    uint32_t InForce(ChoiceOf&& choiceOf) const {
        const auto holds = [&](const Condition& condition) {
            return (condition.choices >> choiceOf(condition.selector) & 1u) != 0;
        };
        const auto found = std::find_if(cases.begin(), cases.end() - 1, [&](const Case& oneCase) {
            return std::all_of(oneCase.conditions.begin(), oneCase.conditions.end(), holds);
        });
        return found->member;
    }
    bool Holds(uint32_t index) const;  ///< whether the parameter is a member
};

/// All of them. find answers the index of a full name.
std::vector<LabelFamily> BuildLabelFamilies(
    const std::function<std::optional<uint32_t>(std::string_view)>& find);

}  // namespace Quorvan::Host

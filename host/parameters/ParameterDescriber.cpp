#include "host/parameters/ParameterDescriber.h"

#include <algorithm>
#include <optional>

#include "host/parameters/ModulationNames.h"
#include "host/parameters/ShellIndex.h"

namespace Quorvan::Host {

namespace {

bool IsDigit(char c) { return c >= '0' && c <= '9'; }

/// The number that stands for the "#" of pattern in name, or the empty text where pattern has none;
/// nothing where name does not follow pattern.
std::optional<std::string_view> MatchPattern(std::string_view pattern, std::string_view name) {
    const size_t mark = pattern.find('#');
    if (mark == std::string_view::npos)
        return pattern == name ? std::optional<std::string_view>("") : std::nullopt;
    const std::string_view head = pattern.substr(0, mark);
    const std::string_view tail = pattern.substr(mark + 1);
    if (name.size() <= head.size() + tail.size() || !name.starts_with(head) ||
        !name.ends_with(tail))
        return std::nullopt;
    const std::string_view number =
        name.substr(head.size(), name.size() - head.size() - tail.size());
    return std::all_of(number.begin(), number.end(), IsDigit)
               ? std::optional<std::string_view>(number)
               : std::nullopt;
}

std::string FillIn(std::string_view pattern, std::string_view number) {
    std::string text(pattern);
    if (const size_t mark = text.find('#'); mark != std::string::npos)
        text.replace(mark, 1, number);
    return text;
}

ParameterRole RoleIn(const ModuleDescription& module, const DescriptionRow& row) {
    const bool driven = module.allDriven || std::find(module.driven.begin(), module.driven.end(),
                                                      row.name) != module.driven.end();
    return driven && row.role == ParameterRole::Setting ? ParameterRole::Driven : row.role;
}

std::optional<Description> DescribeIn(const ModuleDescription& module, std::string_view shortName) {
    for (const DescriptionRows rows : module.rows) {
        for (const DescriptionRow& row : rows) {
            if (const auto number = MatchPattern(row.name, shortName))
                return Description{module.group, FillIn(row.label, *number), row.form,
                                   RoleIn(module, row)};
        }
    }
    return std::nullopt;
}

std::optional<Description> DescribeInTables(std::string_view fullName) {
    // A name may begin like a module's and belong to its parent, such as "FX1_Position": the search
    // goes on where a module does not know the rest.
    for (const ModuleDescription& module : ModuleDescriptions()) {
        if (!fullName.starts_with(module.prefix))
            continue;
        if (auto found = DescribeIn(module, fullName.substr(module.prefix.size())))
            return found;
    }
    return std::nullopt;
}

bool IsMatrixCell(uint32_t index) {
    constexpr uint32_t kCells = kModulationSources * kModulationDestinations;
    return index >= kFirstAmountIndex && index < kFirstAmountIndex + 2 * kCells;
}

Description DescribeCell(uint32_t index) {
    const bool isAmount = index < kFirstActivatedIndex;
    const uint32_t cell = index - (isAmount ? kFirstAmountIndex : kFirstActivatedIndex);
    Description description;
    description.group = "Modulation";
    description.label = SourceName(cell % kModulationSources) + " to " +
                        DestinationName(cell / kModulationSources) + (isAmount ? "" : " On");
    description.form = isAmount ? Form::kPercent : Form::kSwitch;
    return description;
}

Description DescribeListed(uint32_t index, const std::string& name) {
    const auto found = DescribeInTables(name);
    Description description = found ? *found : Description{"Other", name, Form::kPercent};
    const uint32_t destination = index - kFirstAssignedIndex;
    if (index >= kFirstAssignedIndex && destination < kModulationDestinations)
        description.label = DestinationName(destination) + " Assigned";
    return description;
}

}  // namespace

Description DescribeParameter(uint32_t index, const std::string& fullName) {
    return IsMatrixCell(index) ? DescribeCell(index) : DescribeListed(index, fullName);
}

}  // namespace Quorvan::Host

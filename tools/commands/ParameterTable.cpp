#include "tools/commands/ParameterTable.h"

#include <algorithm>
#include <cstdint>
#include <map>
#include <tuple>

#include "host/parameters/NumberText.h"
#include "tools/support/TextTable.h"

namespace Quorvan::Tools {

namespace {

constexpr size_t kWidestRange = 56;     // letters; longer lists of choices are cut
constexpr size_t kNarrowestRange = 22;  // room for "-36.00 st .. 36.00 st"
constexpr size_t kGap = 2;              // of the table, between columns

bool IsFree(const Host::ParameterInfo& info) {
    return info.role == Host::ParameterRole::Setting || info.role == Host::ParameterRole::Control;
}

/// The heart of the instrument goes ahead of the rest among groups that fit as well.
int PlaceOf(const std::string& group) { return group == "Granular" ? 0 : group == "Main" ? 1 : 2; }

void SortByGroup(std::vector<ParameterRow>& rows) {
    std::map<std::string, std::tuple<int, int, uint32_t>> places;
    for (const ParameterRow& row : rows) {
        const std::tuple place{row.rank, PlaceOf(row.info->group), row.info->index};
        const auto [at, isNew] = places.emplace(row.info->group, place);
        if (!isNew)
            at->second = std::min(at->second, place);
    }
    std::sort(rows.begin(), rows.end(), [&](const ParameterRow& a, const ParameterRow& b) {
        const auto key = [&](const ParameterRow& row) {
            return std::tuple{places[row.info->group], row.rank, !IsFree(*row.info),
                              row.info->index};
        };
        return key(a) < key(b);
    });
}

std::string LabelCell(const ParameterRow& row) {
    return "  " + row.info->label + (!row.commonName.empty() && row.inForce ? " *" : "");
}

/// Letters that the columns beside the range take at their widest.
struct Widths {
    explicit Widths(const std::vector<ParameterRow>& rows) {
        for (const ParameterRow& row : rows) {
            label = std::max(label, LabelCell(row).size());
            value = std::max(value, row.text.size());
            name = std::max(name, row.info->name.size());
        }
    }
    size_t label = 7, value = 5, name = 4;
};

/// A list of choices below its row, in lines that fit columns.
void AddLines(TextTable& table, const std::string& list, size_t columns) {
    const std::string indent(6, ' ');
    const size_t room = columns == 0 ? list.size() : std::max(columns, 2 * indent.size()) - 6;
    for (size_t start = 0; start < list.size();) {
        size_t end = list.size();
        if (end - start > room)
            if (const size_t bar = list.rfind("| ", start + room - 1);
                bar != std::string::npos && bar > start)
                end = bar + 2;
        table.Add({indent + list.substr(start, end - start)});
        start = end;
    }
}

size_t RoomIn(size_t columns, size_t taken) { return columns > taken ? columns - taken : 0; }

}  // namespace

std::string RangeText(const Host::ParameterInfo& info, size_t longest) {
    constexpr size_t kDots = 3;
    std::string text;
    for (const std::string& choice : info.choices)
        text += (text.empty() ? "" : " | ") + choice;
    if (info.kind == Host::ParameterKind::Continuous)
        text = Host::FormatNumber(info.minimum, info.unit) + " .. " +
               Host::FormatNumber(info.maximum, info.unit);
    const std::string note = IsFree(info) ? "" : text.empty() ? "read only" : ", read only";
    const size_t room = std::max(longest, note.size() + kDots) - note.size();
    if (text.size() <= room)
        return text + note;
    // A list of choices ends behind a whole one.
    text.resize(room - kDots);
    const size_t bar = text.rfind('|');
    return text.substr(0, bar == std::string::npos ? text.size() : bar + 2) + "..." + note;
}

void PrintParameters(std::ostream& out, std::vector<ParameterRow> rows, size_t columns,
                     bool whole) {
    constexpr size_t kIndexWidth = 5;
    SortByGroup(rows);
    const Widths widths(rows);
    const size_t taken = widths.label + kGap + widths.value + kGap;
    const size_t besideName = RoomIn(columns, taken + kGap + kIndexWidth + kGap + widths.name);
    const bool inOne = columns == 0 || besideName >= kNarrowestRange;
    const size_t room = inOne ? besideName : std::max(kNarrowestRange, RoomIn(columns, taken));
    const size_t longest = columns == 0 ? kWidestRange : std::min(kWidestRange, room);

    TextTable table(inOne ? std::vector<std::string>{"  Label", "Value", "Range", "Index", "Name"}
                          : std::vector<std::string>{"  Label", "Value", "Range"});
    bool marked = false;
    const std::string* group = nullptr;
    const auto isMeant = [](const ParameterRow& row) { return row.rank == 0; };
    const bool hasOne = std::count_if(rows.begin(), rows.end(), isMeant) == 1;
    for (const ParameterRow& row : rows) {
        const Host::ParameterInfo& info = *row.info;
        if (group == nullptr || *group != info.group) {
            table.Add({""});
            table.Add({info.group});
            group = &info.group;
        }
        std::vector<std::string> cells{LabelCell(row), row.text, RangeText(info, longest)};
        if (inOne)
            cells.insert(cells.end(), {std::to_string(info.index), info.name});
        const std::string all = RangeText(info, SIZE_MAX);
        const bool isBelow = all.size() > longest && (whole || (hasOne && isMeant(row)));
        if (isBelow)
            cells[2] = std::to_string(info.choices.size()) + " choices";
        table.Add(std::move(cells));
        if (!inOne)
            table.Add({"      " + info.name + ", " + std::to_string(info.index)});
        if (isBelow)
            AddLines(table, all, columns);
        marked = marked || (!row.commonName.empty() && row.inForce);
    }
    table.Print(out);
    if (marked)
        out << "\n* in force now: what a name that several share means, such as \"Grain Size\".\n";
}

}  // namespace Quorvan::Tools

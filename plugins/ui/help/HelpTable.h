#pragma once

#include <span>
#include <string_view>

namespace Quorvan::Ui {

/// What something on the window does, for its user. The window's tips and the manual
/// (script/control-table) read the same sentences.
struct HelpEntry {
    /// Of a control: without "FX1" or "FX2" and without the number of a function. What stands
    /// behind a # tells apart what has the same name.
    std::string_view name;
    std::string_view sentence;

    std::string_view Title() const { return name.substr(0, name.find('#')); }
};

struct HelpGroup {
    std::string_view title;
    std::span<const HelpEntry> entries;
};

/// Of what moves a parameter.
std::span<const HelpGroup> HelpTable();
/// The sentence on a control of that name; empty where there is none.
std::string_view HelpOn(std::string_view name);

/// Of everything else: pictures, editors, buttons, from above to below.
std::span<const HelpGroup> HelpOnViews();
/// Throws std::logic_error where the table has no such name.
const HelpEntry& HelpOnView(std::string_view name);

}  // namespace Quorvan::Ui

#pragma once

#include <span>
#include <string_view>

namespace Quorvan::Ui {

/// What a control does, for its user.
struct HelpEntry {
    /// Of the control, without "FX1" or "FX2" and without the number of a function.
    std::string_view name;
    std::string_view sentence;
};

std::span<const HelpEntry> HelpTable();
/// The sentence on a control of that name; empty where there is none.
std::string_view HelpOn(std::string_view name);

}  // namespace Quorvan::Ui

#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "host/parameters/Unit.h"

namespace Quorvan::Host {

/// Numbers with units as people read and type them, whatever the locale of the process.
///
/// FormatNumber keeps about three digits and ParseNumber takes what FormatNumber wrote, so that
/// formatting a parsed text gives the text again.

/// number in unit, with a larger unit where the number asks for it.
std::string FormatNumber(double number, Unit unit);

/// The number of text in unit: an optional sign, digits, and behind them nothing, the unit's own
/// sign or a related one ("1.25k", "1250 Hz" and "1.25 kHz" are the same). "-inf" is minus
/// infinity. Nothing where the text is something else.
std::optional<double> ParseNumber(std::string_view text, Unit unit);

/// text without blanks at its ends.
std::string_view Trim(std::string_view text);
/// text in lower case, ASCII only.
std::string Lower(std::string_view text);

}  // namespace Quorvan::Host

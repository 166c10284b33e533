#include "plugins/ui/look/Theme.h"

#include <algorithm>
#include <array>
#include <cmath>

namespace Quorvan::Ui::Theme {

Colour Source(uint32_t source) {
    static constexpr std::array kColours{
        Colour::Hex(0xf2a65a), Colour::Hex(0x5eb1f2), Colour::Hex(0x6fd1a8), Colour::Hex(0xb79bf5),
        Colour::Hex(0xf5766a), Colour::Hex(0xf2d94e), Colour::Hex(0xec86c0)};
    return kColours[std::min<size_t>(source, kColours.size() - 1)];
}

Colour Pitch(double semitones) {
    static constexpr std::array kStops{Colour::Hex(0x7a4fd0), Colour::Hex(0x4f7de8),
                                       Colour::Hex(0x35b0c8), Colour::Hex(0x58d68d),
                                       Colour::Hex(0xf8ec5c)};
    constexpr double kReach = 24.0;
    const double at = std::clamp(0.5 + 0.5 * semitones / kReach, 0.0, 1.0) * (kStops.size() - 1);
    const auto low = std::min(static_cast<size_t>(at), kStops.size() - 2);
    return kStops[low].Towards(kStops[low + 1], at - static_cast<double>(low));
}

}  // namespace Quorvan::Ui::Theme

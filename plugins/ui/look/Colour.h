#pragma once

#include <cstdint>

namespace Quorvan::Ui {

/// Parts 0..1, as they are stored in a picture.
struct Colour {
    double red = 0.0, green = 0.0, blue = 0.0, alpha = 1.0;

    static constexpr Colour Hex(uint32_t code) {
        return {((code >> 16) & 255u) / 255.0, ((code >> 8) & 255u) / 255.0, (code & 255u) / 255.0,
                1.0};
    }
    constexpr Colour Faded(double share) const { return {red, green, blue, alpha * share}; }
    /// On the way to another: 0 is this one, 1 the other.
    constexpr Colour Towards(const Colour& other, double share) const {
        return {red + share * (other.red - red), green + share * (other.green - green),
                blue + share * (other.blue - blue), alpha + share * (other.alpha - alpha)};
    }
};

}  // namespace Quorvan::Ui

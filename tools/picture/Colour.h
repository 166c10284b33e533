#pragma once

namespace Quorvan::Tools {

/// Red, green, blue and opacity, each 0..1.
struct Colour {
    double red = 0.0, green = 0.0, blue = 0.0, alpha = 1.0;

    constexpr Colour Faded(double opacity) const { return {red, green, blue, opacity}; }
};

/// Colours of the picture, for a white page.
namespace Palette {
inline constexpr Colour kPage{1.0, 1.0, 1.0};
inline constexpr Colour kInk{0.11, 0.13, 0.17};
inline constexpr Colour kQuietInk{0.36, 0.39, 0.45};
inline constexpr Colour kGrid{0.87, 0.88, 0.90};
inline constexpr Colour kFrame{0.55, 0.58, 0.63};
inline constexpr Colour kInput{0.16, 0.45, 0.55};
inline constexpr Colour kOutput{0.62, 0.28, 0.16};
inline constexpr Colour kHead{0.10, 0.55, 0.30};
}  // namespace Palette

/// Level as colour, from near black for 0 over violet and orange to near white for 1. Lightness
/// rises evenly, so that the map reads in grey too.
Colour HeatColour(double share);

/// Pitch as colour: grey at 0, blue to light blue down, orange to red up. range semitones are the
/// ends.
Colour PitchColour(double semitones, double range);

}  // namespace Quorvan::Tools

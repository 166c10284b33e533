#pragma once

#include <cstdint>

#include "plugins/ui/look/Colour.h"

/// Colours, sizes and distances of the face. Texts keep a contrast of 4.5 to 1 on every ground that
/// they stand on; everything sits on a grid of 8 logical pixels.
namespace Quorvan::Ui::Theme {

inline constexpr double kGrid = 8.0;

inline constexpr Colour kWindow = Colour::Hex(0x0d0f13);
inline constexpr Colour kPanel = Colour::Hex(0x15181e);
inline constexpr Colour kWell = Colour::Hex(0x0a0c0f);    ///< of tapes, scopes, curves
inline constexpr Colour kRaised = Colour::Hex(0x232832);  ///< of buttons
inline constexpr Colour kRaisedHover = Colour::Hex(0x2d3440);
inline constexpr Colour kLine = Colour::Hex(0x2a303b);
inline constexpr Colour kTrack = Colour::Hex(0x333a47);  ///< where a knob could be
inline constexpr Colour kText = Colour::Hex(0xe8eaee);
inline constexpr Colour kDim = Colour::Hex(0xa0a8b6);  ///< labels
inline constexpr Colour kAccent = Colour::Hex(0xd9dde6);
inline constexpr Colour kOn = Colour::Hex(0x8fd6c4);  ///< what is switched on
inline constexpr Colour kFocus = Colour::Hex(0xffffff);
inline constexpr Colour kWriteHead = Colour::Hex(0x6fe39a);
inline constexpr Colour kPlayHead = Colour::Hex(0xffc857);
inline constexpr Colour kWave = Colour::Hex(0x5a6577);
inline constexpr Colour kFreeze = Colour::Hex(0x8ec9ff);
inline constexpr Colour kAlarm = Colour::Hex(0xff7a6b);

inline constexpr double kSmall = 11.0;  ///< no text is smaller
inline constexpr double kBody = 12.0;
inline constexpr double kHeading = 13.0;
inline constexpr double kTitle = 18.0;

/// Of the source with that number (ModulationNames.h), wherever it acts.
Colour Source(uint32_t source);
/// Of a grain that reads that many semitones off: from violet, two octaves down, over green to
/// yellow, growing lighter all the way so that it reads without seeing hues.
Colour Pitch(double semitones);

}  // namespace Quorvan::Ui::Theme

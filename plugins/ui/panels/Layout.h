#pragma once

#include "plugins/ui/look/Geometry.h"

/// Where everything stands, on the grid of 8 pixels.
namespace Quorvan::Ui::Layout {

inline constexpr Rect kWhole{0.0, 0.0, 1280.0, 800.0};
inline constexpr Rect kHeader{0.0, 0.0, 1280.0, 40.0};
inline constexpr Rect kTape{16.0, 48.0, 1248.0, 232.0};
inline constexpr Rect kTapeControls{16.0, 288.0, 1080.0, 88.0};
inline constexpr Rect kTabs{16.0, 384.0, 1080.0, 24.0};
inline constexpr Rect kPage{16.0, 416.0, 1080.0, 288.0};
inline constexpr Rect kLevels{1104.0, 288.0, 160.0, 416.0};
inline constexpr Rect kSources{16.0, 712.0, 1248.0, 80.0};

}  // namespace Quorvan::Ui::Layout

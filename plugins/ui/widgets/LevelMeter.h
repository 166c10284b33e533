#pragma once

#include <array>
#include <functional>

#include "plugins/ui/widgets/Widget.h"

namespace Quorvan::Ui {

/// Two channels of a level as bars that fall slowly, with the highest of the last seconds.
class LevelMeter final : public Widget {
public:
    /// levels: linear, asked for each picture. peaks: negative where there is nothing new.
    LevelMeter(const Rect& place, std::string itsLabel,
               std::function<std::array<float, 2>()> levelsNow);

    void Draw(Painter& painter) override;
    bool Tick(double seconds) override;
    void Press(const PointerEvent&) override { held = {}; }

private:
    std::string label;
    std::function<std::array<float, 2>()> levels;
    std::array<double, 2> shares{}, held{}, heldSince{};
    std::array<int, 4> drawn{};
    double last = 0.0;
};

}  // namespace Quorvan::Ui

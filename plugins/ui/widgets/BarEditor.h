#pragma once

#include <algorithm>
#include <functional>

#include "plugins/ui/widgets/Widget.h"

namespace Quorvan::Ui {

/// Bars in a row that are drawn with the pointer; with Shift the one that was pressed moves by
/// tenths. Keys: Left and Right choose a bar, Up and Down move it, Delete sets its default.
class BarEditor final : public Widget {
public:
    struct Actions {
        std::function<uint32_t()> count;            ///< bars in use
        std::function<double(uint32_t)> value;      ///< 0..1
        std::function<std::string(uint32_t)> text;  ///< shown in a bar
        std::function<int()> played;                ///< the bar at work; negative or empty: none
        std::function<void(uint32_t)> begin;
        std::function<void(uint32_t, double)> set;
        std::function<void(uint32_t)> end;
        /// By 2 % or, with fine, a tenth of that, or by what the bars come in.
        std::function<void(uint32_t, double steps, bool fine)> nudge;
        std::function<Control*(uint32_t)> control;
    };

    BarEditor(const Rect& place, const Colour& ink, Actions itsActions);

    void Draw(Painter& painter) override;
    bool Tick(double seconds) override;
    void Press(const PointerEvent& event) override;
    void Drag(const PointerEvent& event) override;
    void Release(const PointerEvent& event) override;
    void DoubleClick(const PointerEvent& event) override { Reset(BarAt(event.at)); }
    bool Wheel(const WheelEvent& event) override;
    bool Key(const KeyEvent& event) override;
    bool CanFocus() const override { return true; }
    Point FocusPoint() const override;
    Control* ControlAt(Point at) override { return actions.control(BarAt(at)); }

private:
    double Count() const { return static_cast<double>(std::max<size_t>(shown.size(), 1)); }
    uint32_t BarAt(Point at) const;
    void Nudge(uint32_t bar, double steps, bool fine);
    void Reset(uint32_t bar);

    Colour colour;
    Actions actions;
    std::vector<double> shown;
    int shownPlayed = -1;
    uint32_t first = 0;   ///< that the gesture began on
    uint32_t chosen = 0;  ///< that keys move
    bool isHeld = false;
    Point last;  ///< of the gesture
};

}  // namespace Quorvan::Ui

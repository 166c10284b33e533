#pragma once

#include <functional>
#include <vector>

#include "plugins/ui/widgets/Widget.h"

namespace Quorvan::Ui {

/// A curve through points that are dragged, added and removed by double clicks; between points the
/// curve is bent up and down. Points are held to a grid of 16 by 8 while it snaps or Control is
/// held, not while both. Keys: Page Up and Page Down choose a point, arrows move it, Enter adds one
/// behind it, Delete removes it.
class CurveEditor final : public Widget {
public:
    struct Actions {
        std::function<std::vector<Point>()> points;  ///< 0..1, y upward
        std::function<double(double x)> height;      ///< of the curve, 0..1
        std::function<void()> begin, end;
        std::function<void(size_t, Point)> move;
        std::function<void(Point)> add;
        std::function<void(size_t)> remove;
        std::function<void(size_t segment, double by)> bend;  ///< by: shares of the height
        /// The height of a point.
        std::function<Control&(size_t)> control;
        static constexpr size_t kNoPoint = ~size_t{0};
        std::function<void(Point at, size_t point)> menu;
        std::function<bool()> snaps;
        std::function<double()> level;  ///< present output, 0..1; negative: none
        std::function<double()> place;  ///< where the curve is read now, 0..1; negative: nowhere
    };

    CurveEditor(const Rect& place, const Colour& ink, Actions itsActions);

    void Draw(Painter& painter) override;
    bool Tick(double seconds) override;
    void Press(const PointerEvent& event) override;
    void Drag(const PointerEvent& event) override;
    void Release(const PointerEvent& event) override;
    void DoubleClick(const PointerEvent& event) override;
    bool RightPress(const PointerEvent& event) override;
    bool Wheel(const WheelEvent& event) override;
    Control* ControlAt(Point at) override;
    bool Key(const KeyEvent& event) override;
    bool CanFocus() const override { return true; }
    Point FocusPoint() const override;

private:
    static constexpr int kNone = -1;
    Rect Inner() const { return box.Inset(8.0); }
    Point ToScreen(Point p) const;
    Point FromScreen(Point at) const;
    int PointAt(Point at) const;
    Point Placed(const PointerEvent& event) const;

    Colour colour;
    Actions actions;
    std::vector<Point> shownPoints;
    std::vector<double> shownHeights;
    double shownLevel = -1.0, shownPlace = -1.0;
    int heldPoint = kNone, heldSegment = kNone;
    bool open = false;  ///< a gesture
    size_t chosen = 0;  ///< that keys move
    Point last;
};

}  // namespace Quorvan::Ui

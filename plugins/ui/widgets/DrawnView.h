#pragma once

#include <functional>
#include <string>
#include <utility>

#include "plugins/ui/widgets/Widget.h"

namespace Quorvan::Ui {

/// A picture that a panel draws itself, and a gesture on it.
class DrawnView final : public Widget {
public:
    struct Actions {
        std::function<bool(double seconds)> tick;  ///< whether it looks otherwise
        std::function<void(Painter&, const Rect&)> draw;
        std::function<void()> begin, end;  ///< may be none
        /// way: since the last call.
        std::function<void(const PointerEvent&, Point way, const Rect&)> drag;
        std::function<void()> doubleClick;
        /// One way of the two at a time, in steps; with fine tenths of them. By wheel and arrows.
        std::function<void(Point way, bool fine)> nudge;
        std::function<Control*(Point at, const Rect& box)> control;
    };

    DrawnView(const Rect& place, Actions itsActions)
        : Widget(place), actions(std::move(itsActions)) {}

    void Draw(Painter& painter) override {
        actions.draw(painter, box);
        if (focused)
            painter.RoundLine(box, 4.0, Theme::kFocus, 1.5);
    }
    bool Tick(double seconds) override { return actions.tick(seconds); }
    void Press(const PointerEvent& event) override {
        if (!actions.drag)
            return;
        open = true;
        last = event.at;
        actions.begin();
        actions.drag(event, {0.0, 0.0}, box);
    }
    void Drag(const PointerEvent& event) override {
        if (!open)
            return;
        const Point before = std::exchange(last, event.at);
        actions.drag(event, {event.at.x - before.x, event.at.y - before.y}, box);
    }
    void Release(const PointerEvent&) override {
        if (std::exchange(open, false))
            actions.end();
    }
    void DoubleClick(const PointerEvent& event) override {
        actions.doubleClick ? actions.doubleClick() : Press(event);
    }
    bool CanFocus() const override { return static_cast<bool>(actions.nudge); }
    bool Wheel(const WheelEvent& event) override {
        if (!actions.nudge || event.steps == 0.0)
            return false;
        actions.nudge({0.0, event.steps}, event.modifiers.shift);
        return true;
    }
    bool Key(const KeyEvent& event) override {
        const bool fine = event.modifiers.shift;
        switch (event.key) {
            case Ui::Key::Left:
                return actions.nudge({-1.0, 0.0}, fine), true;
            case Ui::Key::Right:
                return actions.nudge({1.0, 0.0}, fine), true;
            case Ui::Key::Up:
                return actions.nudge({0.0, 1.0}, fine), true;
            case Ui::Key::Down:
                return actions.nudge({0.0, -1.0}, fine), true;
            default:
                return false;
        }
    }
    Control* ControlAt(Point at) override {
        return actions.control ? actions.control(at, box) : nullptr;
    }

private:
    Actions actions;
    Point last;
    bool open = false;
};

}  // namespace Quorvan::Ui

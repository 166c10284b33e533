#pragma once

#include <string>
#include <string_view>

#include "plugins/ui/Events.h"
#include "plugins/ui/look/Painter.h"
#include "plugins/ui/widgets/Control.h"

namespace Quorvan::Ui {

/// A piece of the face that draws itself and takes gestures, all in logical pixels.
class Widget {
public:
    explicit Widget(const Rect& place) : box(place) {}
    virtual ~Widget() = default;
    Widget(const Widget&) = delete;
    Widget& operator=(const Widget&) = delete;

    virtual void Draw(Painter& painter) = 0;
    /// Called for each picture; answers whether Draw would show something else than before.
    virtual bool Tick(double /*seconds*/) { return false; }

    /// Between Press and Release the pointer is the widget's, wherever it is.
    virtual void Press(const PointerEvent&) {}
    virtual void Drag(const PointerEvent&) {}
    virtual void Release(const PointerEvent&) {}
    /// The second press of a double click, in the first one's place.
    virtual void DoubleClick(const PointerEvent& event) { Press(event); }
    virtual void Hover(Point) {}
    virtual bool Wheel(const WheelEvent&) { return false; }
    virtual bool Key(const KeyEvent&) { return false; }
    virtual bool Text(std::string_view) { return false; }
    virtual bool CanFocus() const { return false; }
    /// Where keys work while it has the focus.
    virtual Point FocusPoint() const { return box.Centre(); }

    /// What the right mouse button, tool tips and dropped sources mean there.
    virtual Control* ControlAt(Point) { return nullptr; }
    /// Answers whether the right mouse button was dealt with here.
    virtual bool RightPress(const PointerEvent&) { return false; }
    /// Name and sentence of a tool tip, for what is no control.
    virtual std::string TipTitle(Point) { return tipTitle; }
    const std::string& TipText() const { return tipText; }
    void Explain(std::string_view title, std::string_view sentence) {
        tipTitle = title;
        tipText = sentence;
    }

    bool IsShown() const { return shown; }
    void Show(bool on) {
        stale |= on != shown;
        shown = on;
    }
    void Invalidate() { stale = true; }
    void SetHover(bool on) {
        stale |= on != hovered;
        hovered = on;
    }
    void SetFocus(bool on) {
        stale |= on != focused;
        focused = on;
    }
    /// Answers whether it has to be drawn anew, once.
    bool TakeStale() {
        const bool was = stale;
        stale = false;
        return was;
    }

    Rect box;

protected:
    bool hovered = false, focused = false;

private:
    bool shown = true, stale = true;
    std::string tipTitle, tipText;
};

}  // namespace Quorvan::Ui

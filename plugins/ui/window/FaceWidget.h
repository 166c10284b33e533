#pragma once

#include <algorithm>
#include <chrono>
#include <cmath>
#include <utility>

#include "Cairo.hpp"
#include "host/instrument/PresetLibrary.h"
#include "plugins/ui/Face.h"
#include "plugins/ui/window/Translation.h"

namespace Quorvan::Ui {

/// The face as a widget of the toolkit; Base is the toolkit's own top level widget, or what a
/// format's framework makes of it.
template <class Base>
class FaceWidget : public Base {
public:
    /// instrumentOf finds the instrument once Base stands; more goes to Base.
    template <class Find, class... More>
    FaceWidget(Find instrumentOf, Host::PresetLibrary userPresets, More&&... more)
        : Base(std::forward<More>(more)...),
          presets(std::move(userPresets)),
          face(instrumentOf(*this), presets) {
        face.Resize(static_cast<int>(this->getWidth()), static_cast<int>(this->getHeight()));
    }

    /// To be called some 60 times a second: has what has moved drawn anew.
    void Look() {
        for (const Rect& rect : face.Idle(Now()))
            Renew(rect);
    }
    /// Whether the user holds something of the face, or has let go of it less than a moment ago.
    bool IsHeld() const { return held || Now() - lastTouch < 0.5; }

    /// File descriptor that can be read when the window has events; -1 before it was first drawn.
    int Connection() const { return connection; }

protected:
    void onCairoDisplay(const Toolkit::CairoGraphicsContext& context) override {
        connection = ConnectionOf(context.handle);
        face.Draw(context.handle, Whole());
    }
    bool onMouse(const Toolkit::Widget::MouseEvent& event) override {
        Touch();
        held = event.press;
        const PointerEvent pointer = PointerOf(event);
        return event.press ? face.Press(pointer) : face.Release(pointer);
    }
    bool onMotion(const Toolkit::Widget::MotionEvent& event) override {
        if (!held && !Whole().Contains({event.pos.getX(), event.pos.getY()})) {
            face.Leave();
            return false;
        }
        return face.Move(PointerOf(event));
    }
    bool onScroll(const Toolkit::Widget::ScrollEvent& event) override {
        Touch();
        return face.Wheel(WheelOf(event));
    }
    bool onKeyboard(const Toolkit::Widget::KeyboardEvent& event) override {
        Touch();
        return event.press && face.Key(KeyOf(event));
    }
    bool onCharacterInput(const Toolkit::Widget::CharacterInputEvent& event) override {
        Touch();
        const std::string_view signs = SignsOf(event);
        return !signs.empty() && face.Text(signs);
    }
    void onResize(const Toolkit::Widget::ResizeEvent& event) override {
        Base::onResize(event);
        face.Resize(static_cast<int>(event.size.getWidth()),
                    static_cast<int>(event.size.getHeight()));
    }

private:
    static double Now() {
        const auto now = std::chrono::steady_clock::now().time_since_epoch();
        return std::chrono::duration<double>(now).count();
    }
    void Touch() { lastTouch = Now(); }
    Rect Whole() const {
        return {0.0, 0.0, static_cast<double>(this->getWidth()),
                static_cast<double>(this->getHeight())};
    }
    /// Whole pixels that hold the rectangle, as far as it is on the window.
    void Renew(const Rect& rect) {
        const Rect all = Whole();
        const double left = std::max(0.0, std::floor(rect.x)),
                     top = std::max(0.0, std::floor(rect.y));
        const double right = std::min(all.width, std::ceil(rect.Right()));
        const double bottom = std::min(all.height, std::ceil(rect.Bottom()));
        if (right > left && bottom > top)
            this->repaint(Toolkit::Rectangle<unsigned>(
                static_cast<unsigned>(left), static_cast<unsigned>(top),
                static_cast<unsigned>(right - left), static_cast<unsigned>(bottom - top)));
    }

    Host::PresetLibrary presets;
    Face face;
    bool held = false;
    int connection = -1;
    double lastTouch = -1.0;
};

}  // namespace Quorvan::Ui

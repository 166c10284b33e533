#include "plugins/ui/window/Translation.h"

#include <cairo-xlib.h>

#include <map>

namespace Quorvan::Ui {

namespace {

constexpr unsigned kEnter = 0x0d, kTab = 0x09;

Button ButtonOf(unsigned number) {
    switch (number) {
        case Toolkit::kMouseButtonLeft:
            return Button::Left;
        case Toolkit::kMouseButtonRight:
            return Button::Right;
        case Toolkit::kMouseButtonMiddle:
            return Button::Middle;
        default:
            return Button::Absent;
    }
}

double Seconds(unsigned milliseconds) { return 0.001 * milliseconds; }

}  // namespace

Modifiers ModifiersOf(unsigned toolkit) {
    return {.shift = (toolkit & Toolkit::kModifierShift) != 0,
            .control = (toolkit & Toolkit::kModifierControl) != 0,
            .alt = (toolkit & Toolkit::kModifierAlt) != 0};
}

PointerEvent PointerOf(const Toolkit::Widget::MouseEvent& event) {
    return {{event.pos.getX(), event.pos.getY()},
            ButtonOf(event.button),
            ModifiersOf(event.mod),
            Seconds(event.time)};
}

PointerEvent PointerOf(const Toolkit::Widget::MotionEvent& event) {
    return {{event.pos.getX(), event.pos.getY()},
            Button::Absent,
            ModifiersOf(event.mod),
            Seconds(event.time)};
}

WheelEvent WheelOf(const Toolkit::Widget::ScrollEvent& event) {
    return {{event.pos.getX(), event.pos.getY()}, event.delta.getY(), ModifiersOf(event.mod)};
}

KeyEvent KeyOf(const Toolkit::Widget::KeyboardEvent& event) {
    static const std::map<unsigned, Key> keys{{kTab, Key::Tab},
                                              {kEnter, Key::Enter},
                                              {Toolkit::kKeyEscape, Key::Escape},
                                              {Toolkit::kKeyBackspace, Key::Backspace},
                                              {Toolkit::kKeyDelete, Key::Delete},
                                              {Toolkit::kKeyLeft, Key::Left},
                                              {Toolkit::kKeyRight, Key::Right},
                                              {Toolkit::kKeyUp, Key::Up},
                                              {Toolkit::kKeyDown, Key::Down},
                                              {Toolkit::kKeyPageUp, Key::PageUp},
                                              {Toolkit::kKeyPageDown, Key::PageDown},
                                              {Toolkit::kKeyHome, Key::Home},
                                              {Toolkit::kKeyEnd, Key::End},
                                              {Toolkit::kKeyMenu, Key::Menu},
                                              {Toolkit::kKeyF12, Key::F12}};
    const Modifiers modifiers = ModifiersOf(event.mod);
    if (event.key == Toolkit::kKeyF10 && modifiers.shift)
        return {Key::Menu, 0, modifiers};
    if (event.key >= 'a' && event.key <= 'z')
        return {Key::Letter, static_cast<char>(event.key), modifiers};
    const auto found = keys.find(event.key);
    return {found != keys.end() ? found->second : Key::Other, 0, modifiers};
}

std::string_view SignsOf(const Toolkit::Widget::CharacterInputEvent& event) {
    const Modifiers modifiers = ModifiersOf(event.mod);
    const bool writes =
        event.character >= ' ' && event.character != 0x7f && !modifiers.control && !modifiers.alt;
    return writes ? std::string_view(event.string) : std::string_view();
}

int ConnectionOf(cairo_t* context) {
    cairo_surface_t* const surface = cairo_get_target(context);
    if (cairo_surface_get_type(surface) != CAIRO_SURFACE_TYPE_XLIB)
        return -1;
    return XConnectionNumber(cairo_xlib_surface_get_display(surface));
}

}  // namespace Quorvan::Ui

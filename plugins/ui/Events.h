#pragma once

#include <cstdint>

#include "plugins/ui/look/Geometry.h"

namespace Quorvan::Ui {

struct Modifiers {
    bool shift = false, control = false, alt = false;
};

enum class Button : uint8_t { Absent, Left, Middle, Right };

/// The pointer, in pixels of the window.
struct PointerEvent {
    Point at;
    /// What was pressed or released; Absent: moves, and a release that something else brings about.
    Button button = Button::Absent;
    Modifiers modifiers;
    double time = 0.0;  ///< seconds since any moment; double clicks are told by it
};

struct WheelEvent {
    Point at;
    double steps = 0.0;  ///< notches, up and away from the user is positive
    Modifiers modifiers;
};

enum class Key : uint8_t {
    Other,
    Tab,
    Enter,
    Escape,
    Backspace,
    Delete,
    Left,
    Right,
    Up,
    Down,
    PageUp,
    PageDown,
    Home,
    End,
    F12,
    Menu,   ///< or Shift-F10
    Letter  ///< see letter
};

/// A key that goes down, or down again while it is held. What writes a sign also comes as a text.
struct KeyEvent {
    Key key = Key::Other;
    char letter = 0;  ///< of Key::Letter: in lower case, 'z' for Ctrl-Z
    Modifiers modifiers;
};

}  // namespace Quorvan::Ui

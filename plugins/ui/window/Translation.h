#pragma once

#include <cairo.h>

#include <string_view>

#include "TopLevelWidget.hpp"
#include "plugins/ui/Events.h"

namespace Quorvan::Ui {

/// The toolkit's events in the face's words. Its namespace is a macro, so that no two plug-ins
/// share its classes.
namespace Toolkit = DGL_NAMESPACE;

Modifiers ModifiersOf(unsigned toolkit);
PointerEvent PointerOf(const Toolkit::Widget::MouseEvent& event);
PointerEvent PointerOf(const Toolkit::Widget::MotionEvent& event);
WheelEvent WheelOf(const Toolkit::Widget::ScrollEvent& event);
KeyEvent KeyOf(const Toolkit::Widget::KeyboardEvent& event);
/// Empty where the event types no sign: control characters, and what is typed with Ctrl or Alt.
std::string_view SignsOf(const Toolkit::Widget::CharacterInputEvent& event);

/// File descriptor of the display that a context draws on, -1 where it draws on none.
int ConnectionOf(cairo_t* context);

}  // namespace Quorvan::Ui

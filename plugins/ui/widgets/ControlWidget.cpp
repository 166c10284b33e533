#include "plugins/ui/widgets/ControlWidget.h"

#include <algorithm>
#include <cmath>

namespace Quorvan::Ui {

ControlWidget::ControlWidget(const Rect& place, Stage& face, std::unique_ptr<Control> moved,
                             std::string itsLabel)
    : Widget(place), stage(face), control(std::move(moved)), label(std::move(itsLabel)) {}

bool ControlWidget::Tick(double) {
    const Influence influence = control->Influences();
    const float position = control->Position();
    std::string text = control->Text();
    if (position == shownPosition && influence == shownInfluence && text == shownText)
        return false;
    shownPosition = position;
    shownInfluence = influence;
    shownText = std::move(text);
    return true;
}

float ControlWidget::Held(double position) const {
    position = std::clamp(position, 0.0, 1.0);
    const uint32_t steps = control->Steps();
    if (steps < 2)
        return static_cast<float>(position);
    const double highest = steps - 1;
    return static_cast<float>(std::round(position * highest) / highest);
}

void ControlWidget::Press(const PointerEvent& event) {
    if (DragTravel() <= 0.0)
        return;
    dragging = true;
    last = event.at;
    dragged = static_cast<double>(control->Position());
    control->Begin();
}

void ControlWidget::Drag(const PointerEvent& event) {
    if (!dragging)
        return;
    const double way = DragsAcross() ? event.at.x - last.x : last.y - event.at.y;
    last = event.at;
    dragged =
        std::clamp(dragged + way / DragTravel() * (event.modifiers.shift ? 0.1 : 1.0), 0.0, 1.0);
    const float position = Held(dragged);
    if (position != control->Position())
        control->Move(position);
}

void ControlWidget::Release(const PointerEvent&) {
    if (dragging)
        control->End();
    dragging = false;
}

void ControlWidget::DoubleClick(const PointerEvent&) { control->MoveOnce(control->Default()); }

void ControlWidget::Nudge(double share, bool fine) {
    const uint32_t steps = control->Steps();
    const double step =
        steps > 1 ? std::copysign(1.0 / (steps - 1), share) : share * (fine ? 0.1 : 1.0);
    control->MoveOnce(Held(static_cast<double>(control->Position()) + step));
}

bool ControlWidget::Wheel(const WheelEvent& event) {
    if (event.steps != 0.0)
        Nudge(0.02 * event.steps, event.modifiers.shift);
    return true;
}

bool ControlWidget::Key(const KeyEvent& event) {
    const bool fine = event.modifiers.shift;
    switch (event.key) {
        case Key::Up:
        case Key::Right:
            Nudge(0.02, fine);
            return true;
        case Key::Down:
        case Key::Left:
            Nudge(-0.02, fine);
            return true;
        case Key::PageUp:
            Nudge(0.1, fine);
            return true;
        case Key::PageDown:
            Nudge(-0.1, fine);
            return true;
        case Key::Home:
            control->MoveOnce(0.0f);
            return true;
        case Key::End:
            control->MoveOnce(1.0f);
            return true;
        case Key::Delete:
        case Key::Backspace:
            control->MoveOnce(control->Default());
            return true;
        case Key::Enter:
            TypeValue(stage, *control, box);
            return true;
        default:
            return false;
    }
}

bool ControlWidget::Text(std::string_view signs) {
    if (signs.empty() ||
        std::string_view("0123456789.-+@").find(signs.front()) == std::string_view::npos)
        return false;
    TypeValue(stage, *control, box, std::string(signs));
    return true;
}

void ControlWidget::DrawFocus(Painter& painter, const Rect& around, double radius) const {
    if (focused)
        painter.RoundLine(around, radius, Theme::kFocus, 1.5);
}

void TypeValue(Stage& stage, Control& control, const Rect& anchor, const std::string& begun) {
    stage.OpenEntry(anchor, begun.empty() ? control.Text() : begun,
                    [&control](const std::string& text) { return control.Type(text); });
}

}  // namespace Quorvan::Ui

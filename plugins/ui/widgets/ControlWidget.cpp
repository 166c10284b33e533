#include "plugins/ui/widgets/ControlWidget.h"

#include <algorithm>
#include <cmath>
#include <utility>

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

bool ControlWidget::TakeRoute(const PointerEvent& event) {
    const Influence influence = control->Influences();
    const int which = influence.count == 0 ? -1 : RouteAt(event, influence);
    if (which < 0)
        return false;
    const Influence::Route& route = influence.routes[static_cast<size_t>(which)];
    draggingRoute = true;
    draggedSource = route.source;
    draggedAmount = static_cast<double>(route.amount);
    last = event.at;
    control->BeginRoute(draggedSource);
    return true;
}

void ControlWidget::DragRoute(const PointerEvent& event) {
    const double way = (last.y - event.at.y + event.at.x - last.x) / 200.0;
    last = event.at;
    draggedAmount =
        std::clamp(draggedAmount + way * (event.modifiers.shift ? 0.1 : 1.0), -1.0, 1.0);
    control->Route(draggedSource, static_cast<float>(draggedAmount));
}

void ControlWidget::DrawRouteBars(Painter& painter, const Rect& along) const {
    const Influence influence = control->Influences();
    if (influence.count == 0)
        return;
    const double position = static_cast<double>(control->Position());
    const double height = std::min(2.0, 6.0 / influence.count);
    for (uint32_t i = 0; i < influence.count; ++i) {
        const double end =
            std::clamp(position + static_cast<double>(influence.routes[i].amount), 0.0, 1.0);
        const double low = std::min(position, end), high = std::max(position, end);
        painter.Fill({along.x + along.width * low, along.Bottom() - height * (i + 1.0),
                      std::max(2.0, along.width * (high - low)), height},
                     Theme::Source(influence.routes[i].source));
    }
    const Point dot{along.x + along.width * static_cast<double>(influence.present),
                    along.Bottom() - 1.5};
    painter.Disc(dot, 4.0, Theme::kWindow);
    painter.Disc(dot, 3.0, Theme::Source(influence.routes[0].source));
}

void ControlWidget::Press(const PointerEvent& event) {
    if (TakeRoute(event) || DragTravel() <= 0.0)
        return;
    dragging = true;
    last = event.at;
    dragged = static_cast<double>(control->Position());
    control->Begin();
}

void ControlWidget::Drag(const PointerEvent& event) {
    if (draggingRoute)
        return DragRoute(event);
    if (!dragging)
        return;
    const double way = DragsAcross() ? event.at.x - last.x : last.y - event.at.y;
    last = event.at;
    dragged =
        std::clamp(dragged + way / DragTravel() * (event.modifiers.shift ? 0.1 : 1.0), 0.0, 1.0);
    const float position = control->Held(dragged);
    if (position != control->Position())
        control->Move(position);
}

void ControlWidget::Release(const PointerEvent&) {
    if (std::exchange(draggingRoute, false))
        control->EndRoute();
    if (dragging)
        control->End();
    dragging = false;
}

void ControlWidget::DoubleClick(const PointerEvent&) { control->MoveOnce(control->Default()); }

void ControlWidget::Nudge(double share, bool fine) {
    control->MoveOnce(control->Nudged(share, fine));
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
        default:
            return false;
    }
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

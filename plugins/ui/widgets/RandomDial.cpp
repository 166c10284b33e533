#include "plugins/ui/widgets/RandomDial.h"

#include <cmath>
#include <utility>

namespace Quorvan::Ui {

RandomDial::RandomDial(const Rect& place, Stage& face, std::unique_ptr<Control> amount,
                       std::unique_ptr<Control> itsDirection)
    : ControlWidget(place, face, std::move(amount), "Chance"), direction(std::move(itsDirection)) {}

bool RandomDial::Tick(double seconds) {
    const float now = direction ? direction->Position() : 0.0f;
    return ControlWidget::Tick(seconds) || std::exchange(shownDirection, now) != now;
}

std::string_view RandomDial::Way() const {
    return direction ? std::string_view(direction->Choices()[direction->Choice()]) : "Both";
}

bool RandomDial::GoesUp() const {
    const std::string_view way = Way();
    return way == "Both" || way == "Up" || way == "Longer" || way == "More";
}

bool RandomDial::GoesDown() const {
    const std::string_view way = Way();
    return way == "Both" || way == "Down" || way == "Shorter" || way == "Fewer";
}

void RandomDial::Draw(Painter& painter) {
    const Point centre = box.Centre();
    const Influence influence = control->Influences();
    const double amount = Amount();
    const bool lit = hovered || dragging;
    painter.Disc(centre, 10.0, lit ? Theme::kRaisedHover : Theme::kRaised);
    painter.Arc(centre, 9.0, 0.0, 0.999, Theme::kTrack, 2.0);
    if (amount > 0.001)
        painter.Arc(centre, 9.0, 0.0, amount, Theme::kOn, 2.0);
    if (influence.count > 0) {
        const double angle =
            (static_cast<double>(influence.present) - 0.25) * 2.0 * 3.14159265358979;
        painter.Disc({centre.x + 9.0 * std::cos(angle), centre.y + 9.0 * std::sin(angle)}, 2.5,
                     Theme::Source(influence.routes[0].source));
    }
    const Colour ink = amount > 0.001 ? Theme::kText : Theme::kDim;
    const std::string_view way = Way();
    const bool up = GoesUp(), down = GoesDown(), both = up && down;
    if (way == "Jitter" || way == "Skip") {
        const auto bar = [&](double x) {
            painter.Fill({centre.x + x - 0.75, centre.y - 3.5, 1.5, 7.0}, ink);
        };
        bar(-4.0);
        bar(way == "Jitter" ? 3.0 : 4.0);
        if (way == "Jitter")
            bar(-1.0);
    } else {
        if (up)
            painter.Arrow({centre.x, centre.y - (both ? 3.0 : 0.0)}, both ? 3.2 : 4.5, 0.0, ink);
        if (down)
            painter.Arrow({centre.x, centre.y + (both ? 3.0 : 0.0)}, both ? 3.2 : 4.5, 0.5, ink);
    }
    if (focused)
        painter.Ring(centre, 11.0, Theme::kFocus, 1.5);
}

void RandomDial::Press(const PointerEvent& event) {
    // What takes hold of a source's amount turns no direction.
    pressed = event.modifiers.alt ? Point{-1e3, -1e3} : event.at;
    pressedPosition = control->Position();
    pressedDirection = direction ? direction->Position() : 0.0f;
    ControlWidget::Press(event);
}

/// The first click of the two has turned the arrow.
void RandomDial::DoubleClick(const PointerEvent&) {
    pressed = {-1e3, -1e3};
    if (direction)
        direction->MoveOnce(pressedDirection);
    control->MoveOnce(control->Default());
}

void RandomDial::Release(const PointerEvent& event) {
    ControlWidget::Release(event);
    const bool still = std::hypot(event.at.x - pressed.x, event.at.y - pressed.y) < 3.0;
    const bool isClick = still && event.button == Button::Left;
    if (direction && isClick && control->Position() == pressedPosition)
        direction->MoveOnce(
            direction->PositionOfChoice((direction->Choice() + 1) % direction->Steps()));
}

}  // namespace Quorvan::Ui

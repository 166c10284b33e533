#include "plugins/ui/widgets/RouteList.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace Quorvan::Ui {

namespace {

constexpr double kName = 128.0, kBehindBar = 72.0;  // widths of the name, and of amount and cross

double BarWidth(const Rect& box) { return box.width - kName - kBehindBar; }

}  // namespace

RouteList::RouteList(const Rect& place, Actions itsActions)
    : Widget(place), actions(std::move(itsActions)) {}

bool RouteList::Tick(double) {
    std::vector<Route> routes = actions.routes();
    if (routes == shown)
        return false;
    shown = std::move(routes);
    top = std::min(top, shown.empty() ? 0 : shown.size() - 1);
    return true;
}

void RouteList::Draw(Painter& painter) {
    if (shown.empty()) {
        painter.Paragraph({box.x, box.y + 4.0, box.width, 60.0},
                          "Nothing yet. Drag the source's tile onto a control.",
                          {Theme::kBody, Theme::kDim}, 18.0);
        return;
    }
    painter.Clip(box);
    const Colour colour = actions.colour();
    for (size_t i = top; i < shown.size(); ++i) {
        const Rect row{box.x, box.y + kRow * static_cast<double>(i - top), box.width, kRow - 4.0};
        if (row.y > box.Bottom())
            break;
        painter.Text({row.x, row.y, kName - 4.0, row.height}, shown[i].name,
                     {Theme::kSmall, Theme::kText});
        const Rect bar{row.x + kName, row.y + 4.0, BarWidth(box), row.height - 8.0};
        painter.Fill(bar, Theme::kWell);
        const double middle = bar.Centre().x, end = middle + 0.5 * bar.width * shown[i].amount;
        painter.Fill({std::min(middle, end), bar.y, std::abs(end - middle), bar.height}, colour);
        painter.Fill({painter.Snap(middle), bar.y - 2.0, 1.0, bar.height + 4.0}, Theme::kDim);
        const int percent = static_cast<int>(std::lround(100.0 * shown[i].amount));
        painter.Text({bar.Right() + 4.0, row.y, 46.0, row.height}, std::to_string(percent) + " %",
                     {Theme::kSmall, Theme::kText}, Align::Right);
        painter.Text({row.Right() - 18.0, row.y, 18.0, row.height}, "\u00d7",
                     {Theme::kBody, Theme::kDim}, Align::Centre);
        if (focused && i == chosen)
            painter.RoundLine(row, 4.0, Theme::kFocus, 1.5);
    }
    painter.Unclip();
}

int RouteList::RowAt(Point at) const {
    const size_t row = top + static_cast<size_t>(std::max(0.0, (at.y - box.y) / kRow));
    return row < shown.size() ? static_cast<int>(row) : -1;
}

void RouteList::Press(const PointerEvent& event) {
    const int row = RowAt(event.at);
    if (row < 0)
        return;
    if (event.at.x > box.Right() - 20.0)
        return actions.remove(shown[static_cast<size_t>(row)].row);
    chosen = static_cast<size_t>(row);
    held = &actions.control(shown[chosen].row);
    position = static_cast<double>(held->Position());
    last = event.at;
    held->Begin();
}

/// At nothing the route would be none, and vanish under the pointer.
void RouteList::Put(Control& control, double position) {
    const double nothing = static_cast<double>(control.Default());
    const double way = position - nothing;
    constexpr double kLeast = 0.0025;
    control.Move(static_cast<float>(std::abs(way) < kLeast ? nothing + std::copysign(kLeast, way)
                                                           : position));
}

void RouteList::Drag(const PointerEvent& event) {
    if (held == nullptr)
        return;
    const double way = (event.at.x - last.x) / BarWidth(box);
    last = event.at;
    position = std::clamp(position + way * (event.modifiers.shift ? 0.1 : 1.0), 0.0, 1.0);
    Put(*held, position);
}

Control* RouteList::ControlAt(Point at) {
    const int row = RowAt(at);
    return row < 0 ? nullptr : &actions.control(shown[static_cast<size_t>(row)].row);
}

Point RouteList::FocusPoint() const {
    const double row = static_cast<double>(std::max(chosen, top) - top);
    return {box.Centre().x, box.y + kRow * (row + 0.5)};
}

bool RouteList::Wheel(const WheelEvent& event) {
    if (event.steps < 0.0 && top + 1 < shown.size())
        ++top;
    else if (event.steps > 0.0 && top > 0)
        --top;
    Invalidate();
    return true;
}

bool RouteList::Key(const KeyEvent& event) {
    if (shown.empty())
        return false;
    chosen = std::min(chosen, shown.size() - 1);
    Control& control = actions.control(shown[chosen].row);
    const auto nudge = [&](double way) {
        control.Begin();
        Put(control, static_cast<double>(control.Nudged(0.01 * way, event.modifiers.shift)));
        control.End();
        return true;
    };
    const size_t visible = static_cast<size_t>(std::max(1.0, box.height / kRow));
    switch (event.key) {
        case Ui::Key::Up:
        case Ui::Key::Down:
            chosen = (chosen + (event.key == Ui::Key::Up ? shown.size() - 1 : 1)) % shown.size();
            top = std::clamp(top, chosen + 1 - std::min(chosen + 1, visible), chosen);
            Invalidate();
            return true;
        case Ui::Key::Left:
            return nudge(-1.0);
        case Ui::Key::Right:
            return nudge(1.0);
        case Ui::Key::Delete:
        case Ui::Key::Backspace:
            return actions.remove(shown[chosen].row), true;
        default:
            return false;
    }
}

}  // namespace Quorvan::Ui

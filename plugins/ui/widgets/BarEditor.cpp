#include "plugins/ui/widgets/BarEditor.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace Quorvan::Ui {

BarEditor::BarEditor(const Rect& place, const Colour& ink, Actions itsActions)
    : Widget(place), colour(ink), actions(std::move(itsActions)) {}

bool BarEditor::Tick(double) {
    std::vector<double> values(actions.count());
    for (uint32_t i = 0; i < values.size(); ++i)
        values[i] = actions.value(i);
    const int played = actions.played ? actions.played() : -1;
    if (values == shown && played == shownPlayed)
        return false;
    shown = std::move(values);
    shownPlayed = played;
    return true;
}

void BarEditor::Draw(Painter& painter) {
    painter.Round(box, 4.0, Theme::kWell);
    const double width = box.width / Count();
    for (uint32_t i = 0; i < shown.size(); ++i) {
        const Rect cell{box.x + width * i + 1.0, box.y + 2.0, width - 2.0, box.height - 4.0};
        const bool isPlayed = static_cast<int>(i) == shownPlayed;
        painter.Fill(cell, isPlayed ? Theme::kRaisedHover : Theme::kPanel);
        const double height = shown[i] * cell.height;
        painter.Fill({cell.x, cell.Bottom() - height, cell.width, height},
                     Theme::kTrack.Towards(colour, isPlayed ? 0.5 : 0.25));
        painter.Fill({cell.x, cell.Bottom() - std::max(height, 2.0), cell.width, 2.0},
                     shown[i] > 0.0 ? colour : Theme::kTrack);
        if (isPlayed)
            painter.Fill({cell.x, cell.y, cell.width, 3.0}, Theme::kText);
        painter.Text({cell.x, cell.Bottom() - 15.0, cell.width, 14.0}, actions.text(i),
                     {Theme::kSmall, Theme::kText}, Align::Centre);
        if (focused && i == chosen)
            painter.RoundLine(cell, 2.0, Theme::kFocus, 1.5);
    }
}

uint32_t BarEditor::BarAt(Point at) const {
    const double share = (at.x - box.x) / box.width * Count();
    return static_cast<uint32_t>(std::clamp(share, 0.0, Count() - 1.0));
}

Point BarEditor::FocusPoint() const {
    return {box.x + box.width * (chosen + 0.5) / Count(), box.Centre().y};
}

void BarEditor::Press(const PointerEvent& event) {
    first = chosen = BarAt(event.at);
    last = event.at;
    isHeld = true;
    actions.begin(first);
    Drag(event);
}

/// A quick stroke passes bars between two places of the pointer.
void BarEditor::Drag(const PointerEvent& event) {
    if (!isHeld)
        return;
    const Point from = std::exchange(last, event.at);
    const auto height = [this](double y) {
        return std::clamp((box.Bottom() - y) / box.height, 0.0, 1.0);
    };
    if (event.modifiers.shift) {
        const double by = 0.1 * (from.y - event.at.y) / box.height;
        if (by != 0.0)
            actions.set(first, std::clamp(actions.value(first) + by, 0.0, 1.0));
        return;
    }
    const uint32_t begin = BarAt(from), end = BarAt(event.at);
    const uint32_t bars = begin < end ? end - begin : begin - end;
    for (uint32_t i = 1; i < bars; ++i)
        actions.set(begin < end ? begin + i : begin - i,
                    height(from.y + i * (event.at.y - from.y) / bars));
    actions.set(end, height(event.at.y));
}

void BarEditor::Release(const PointerEvent&) {
    if (std::exchange(isHeld, false))
        actions.end(first);
}

void BarEditor::Nudge(uint32_t bar, double steps, bool fine) {
    actions.begin(bar);
    actions.nudge(bar, steps, fine);
    actions.end(bar);
}

void BarEditor::Reset(uint32_t bar) {
    Control& control = *actions.control(bar);
    control.MoveOnce(control.Default());
}

bool BarEditor::Wheel(const WheelEvent& event) {
    if (event.steps != 0.0)
        Nudge(BarAt(event.at), event.steps, event.modifiers.shift);
    return true;
}

bool BarEditor::Key(const KeyEvent& event) {
    const auto count = static_cast<uint32_t>(Count());
    chosen = std::min(chosen, count - 1);
    switch (event.key) {
        case Ui::Key::Left:
        case Ui::Key::Right:
            chosen = (chosen + (event.key == Ui::Key::Left ? count - 1 : 1)) % count;
            Invalidate();
            return true;
        case Ui::Key::Up:
        case Ui::Key::Down:
            Nudge(chosen, event.key == Ui::Key::Up ? 1.0 : -1.0, event.modifiers.shift);
            return true;
        case Ui::Key::Delete:
        case Ui::Key::Backspace:
            Reset(chosen);
            return true;
        default:
            return false;
    }
}

}  // namespace Quorvan::Ui

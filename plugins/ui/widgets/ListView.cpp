#include "plugins/ui/widgets/ListView.h"

#include <algorithm>
#include <utility>

namespace Quorvan::Ui {

ListView::ListView(const Rect& place, Actions itsActions)
    : Widget(place), actions(std::move(itsActions)) {}

bool ListView::Tick(double) {
    std::vector<Line> lines = actions.lines();
    const bool isOther = lines != shown;
    if (lines.size() != shown.size())
        top = 0;
    shown = std::move(lines);
    const size_t before = top;
    if (std::exchange(isToReveal, false))
        ShowChosen();
    return isOther || top != before;
}

void ListView::ShowChosen() {
    const auto chosen =
        std::find_if(shown.begin(), shown.end(), [](const Line& line) { return line.chosen; });
    const auto line = static_cast<size_t>(chosen - shown.begin());
    if (chosen == shown.end() || (line >= top && line < top + RowsShown()))
        return;
    const size_t most = shown.size() > RowsShown() ? shown.size() - RowsShown() : 0;
    top = std::min(line > RowsShown() / 2 ? line - RowsShown() / 2 : 0, most);
}

void ListView::Draw(Painter& painter) {
    painter.Round(box, 6.0, Theme::kWell);
    if (shown.empty())
        painter.Text({box.x + 14.0, box.y, box.width - 28.0, kRow}, actions.none,
                     {Theme::kBody, Theme::kDim});
    for (size_t i = top; i < std::min(shown.size(), top + RowsShown()); ++i) {
        const Line& line = shown[i];
        const Rect row{box.x + 4.0, box.y + kRow * static_cast<double>(i - top), box.width - 8.0,
                       kRow};
        if (line.chosen)
            painter.Round(row.Inset(0.0, 1.0), 4.0, Theme::kTrack);
        const double left = line.star >= 0 ? 28.0 : 10.0;
        if (line.star >= 0)
            painter.Text({row.x + 8.0, row.y, 16.0, kRow}, line.star == 1 ? "\u2605" : "\u2606",
                         {Theme::kBody, line.star == 1 ? Theme::kPlayHead : Theme::kDim});
        // The note has what the text leaves, and half of the row at least.
        const double room = row.width - left - 10.0;
        const double most = line.note.empty() ? room : std::max(0.5 * row.width - left, 0.0);
        const Type type{Theme::kBody, Theme::kText};
        const double width = std::min(painter.TextWidth(line.text, type) + 1.0, most);
        painter.Text({row.x + left, row.y, width, kRow}, line.text, type);
        if (!line.note.empty())
            painter.Text({row.x + left + width + 12.0, row.y, room - width - 12.0, kRow}, line.note,
                         {Theme::kSmall, Theme::kDim}, Align::Right);
    }
    if (shown.size() > RowsShown()) {
        const double all = static_cast<double>(shown.size());
        painter.Round({box.Right() - 4.0, box.y + box.height * static_cast<double>(top) / all, 3.0,
                       box.height * static_cast<double>(RowsShown()) / all},
                      1.5, Theme::kTrack);
    }
    if (focused)
        painter.RoundLine(box, 6.0, Theme::kFocus, 1.5);
}

int ListView::LineAt(Point at) const {
    const size_t line = top + static_cast<size_t>(std::max(0.0, (at.y - box.y) / kRow));
    return line < shown.size() ? static_cast<int>(line) : -1;
}

void ListView::Press(const PointerEvent& event) {
    const int line = LineAt(event.at);
    if (line < 0)
        return;
    const auto which = static_cast<size_t>(line);
    if (shown[which].star >= 0 && event.at.x < box.x + 30.0)
        actions.star(which);
    else
        actions.choose(which);
}

void ListView::DoubleClick(const PointerEvent& event) {
    const int line = LineAt(event.at);
    if (line >= 0 && actions.open)
        actions.open(static_cast<size_t>(line));
    else
        Press(event);
}

bool ListView::Wheel(const WheelEvent& event) {
    const size_t most = shown.size() > RowsShown() ? shown.size() - RowsShown() : 0;
    const double wanted = static_cast<double>(top) - 3.0 * event.steps;
    top = static_cast<size_t>(std::clamp(wanted, 0.0, static_cast<double>(most)));
    Invalidate();
    return true;
}

void ListView::Step(int way) {
    int at = -1;
    for (size_t i = 0; i < shown.size(); ++i)
        if (shown[i].chosen)
            at = static_cast<int>(i);
    const int next = std::clamp(at + way, 0, static_cast<int>(shown.size()) - 1);
    if (shown.empty())
        return;
    const auto line = static_cast<size_t>(next);
    top = line < top ? line : std::max(top, line + 1 > RowsShown() ? line + 1 - RowsShown() : 0);
    actions.choose(line);
}

bool ListView::Key(const KeyEvent& event) {
    if (event.key == Key::Down || event.key == Key::Up) {
        Step(event.key == Key::Down ? 1 : -1);
        return true;
    }
    if (event.key != Key::Enter || !actions.open)
        return false;
    for (size_t i = 0; i < shown.size(); ++i)
        if (shown[i].chosen)
            actions.open(i);
    return true;
}

}  // namespace Quorvan::Ui

#include "plugins/ui/widgets/Menu.h"

#include <algorithm>
#include <cctype>

namespace Quorvan::Ui {

namespace {

/// Menus have to know how wide they are before anything is drawn.
double WidthOf(const std::vector<MenuItem>& items) {
    return Measured([&items](Painter& painter) {
        double width = 96.0;
        for (const MenuItem& item : items)
            width =
                std::max(width, painter.TextWidth(item.text, {Theme::kBody, Theme::kText, true}));
        return std::min(width + 44.0, 420.0);
    });
}

}  // namespace

Menu::Menu(const Rect& anchor, const Rect& room, std::vector<MenuItem> things)
    : Widget({}), items(std::move(things)) {
    const auto most = static_cast<size_t>((room.height - 2.0 * kPad) / kRow);
    columns = (items.size() + most - 1) / most;
    rows = (items.size() + columns - 1) / std::max<size_t>(columns, 1);
    box.width = WidthOf(items) * static_cast<double>(columns);
    box.height = kRow * static_cast<double>(rows) + 2.0 * kPad;
    box.x = std::clamp(anchor.x, room.x, std::max(room.x, room.Right() - box.width));
    box.y = anchor.Bottom() + 2.0;
    if (box.Bottom() > room.Bottom())
        box.y = anchor.y - box.height - 2.0 >= room.y ? anchor.y - box.height - 2.0
                                                      : room.Bottom() - box.height;
    box.y = std::max(box.y, room.y);
    for (size_t i = 0; i < items.size(); ++i)
        if (items[i].ticked)
            marked = static_cast<int>(i);
}

void Menu::Draw(Painter& painter) {
    painter.Round({box.x, box.y + 2.0, box.width, box.height}, 6.0, {0.0, 0.0, 0.0, 0.5});
    painter.Round(box, 6.0, Theme::kRaised);
    painter.RoundLine(box, 6.0, Theme::kTrack);
    const double width = box.width / static_cast<double>(columns);
    for (size_t i = 0; i < items.size(); ++i) {
        const MenuItem& item = items[i];
        const size_t column = i / rows;
        const Rect row{box.x + width * static_cast<double>(column),
                       box.y + kPad + kRow * static_cast<double>(i % rows), width, kRow};
        const bool isMarked = static_cast<int>(i) == marked && item.action;
        if (isMarked)
            painter.Round(row.Inset(4.0, 1.0), 4.0, Theme::kTrack);
        if (item.startsGroup && i % rows != 0)
            painter.Fill({row.x + 8.0, painter.Snap(row.y), row.width - 16.0, 1.0}, Theme::kTrack);
        if (item.ticked)
            painter.Disc({row.x + 14.0, row.y + 0.5 * kRow}, 3.0, Theme::kOn);
        if (item.mark.alpha > 0.0)
            painter.Disc({row.x + 14.0, row.y + 0.5 * kRow}, 4.0, item.mark);
        painter.Text({row.x + 26.0, row.y, row.width - 34.0, kRow}, item.text,
                     {Theme::kBody, item.action ? Theme::kText : Theme::kDim, !item.action});
    }
}

int Menu::RowAt(Point at) const {
    if (!box.Inset(0.0, kPad).Contains(at))
        return -1;
    const double width = box.width / static_cast<double>(columns);
    const auto column = static_cast<size_t>((at.x - box.x) / width);
    const auto row = static_cast<size_t>((at.y - box.y - kPad) / kRow);
    const size_t item = column * rows + row;
    return item < items.size() ? static_cast<int>(item) : -1;
}

void Menu::Hover(Point at) {
    const int row = RowAt(at);
    if (row != marked)
        Invalidate();
    marked = row;
}

void Menu::Choose(int row) {
    if (row < 0 || !items[static_cast<size_t>(row)].action)
        return;
    done = true;
    // The action may open another menu in this one's place.
    const auto action = items[static_cast<size_t>(row)].action;
    action();
}

void Menu::Press(const PointerEvent& event) {
    if (!box.Contains(event.at))
        done = true;
    else
        Choose(RowAt(event.at));
}

bool Menu::Wheel(const WheelEvent& event) {
    Step(event.steps > 0.0 ? -1 : 1);
    return true;
}

void Menu::Step(int way) {
    const auto count = static_cast<int>(items.size());
    for (int tries = 0; tries < count; ++tries) {
        marked = marked < 0 && way < 0 ? count - 1 : (marked + way + count) % count;
        if (items[static_cast<size_t>(marked)].action)
            break;
    }
    Invalidate();
}

bool Menu::Key(const KeyEvent& event) {
    const auto count = static_cast<int>(items.size()), column = static_cast<int>(rows);
    switch (event.key) {
        case Key::Down:
        case Key::Up:
            Step(event.key == Key::Down ? 1 : -1);
            break;
        case Key::Home:
        case Key::End:
            marked = -1;
            Step(event.key == Key::Home ? 1 : -1);
            break;
        case Key::Left:
        case Key::Right: {
            const int beside = marked + (event.key == Key::Left ? -column : column);
            if (marked >= 0 && beside >= 0 && beside < count) {
                marked = beside - 1;
                Step(1);
            }
            break;
        }
        case Key::Enter:
            Choose(marked);
            break;
        case Key::Escape:
        case Key::Tab:
            done = true;
            break;
        default:
            break;
    }
    return true;
}

bool Menu::Text(std::string_view signs) {
    const auto lower = [](char sign) { return std::tolower(static_cast<unsigned char>(sign)); };
    const size_t count = items.size();
    for (size_t way = 0; way < count && !signs.empty(); ++way) {
        const size_t item = (static_cast<size_t>(marked + 1) + way) % count;
        if (items[item].action && !items[item].text.empty() &&
            lower(items[item].text.front()) == lower(signs.front())) {
            marked = static_cast<int>(item);
            Invalidate();
            break;
        }
    }
    return true;
}

}  // namespace Quorvan::Ui

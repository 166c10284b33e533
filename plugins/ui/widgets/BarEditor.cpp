#include "plugins/ui/widgets/BarEditor.h"

#include <algorithm>
#include <utility>

namespace Quorvan::Ui {

BarEditor::BarEditor(const Rect& place, std::string tip, std::string sentence, Actions itsActions)
    : Widget(place),
      title(std::move(tip)),
      help(std::move(sentence)),
      actions(std::move(itsActions)) {}

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
    const double width = box.width / static_cast<double>(std::max<size_t>(shown.size(), 1));
    for (uint32_t i = 0; i < shown.size(); ++i) {
        const Rect cell{box.x + width * i + 1.0, box.y + 2.0, width - 2.0, box.height - 4.0};
        const bool isPlayed = static_cast<int>(i) == shownPlayed;
        painter.Fill(cell, isPlayed ? Theme::kRaisedHover : Theme::kPanel);
        const double height = shown[i] * cell.height;
        painter.Fill({cell.x, cell.Bottom() - height, cell.width, height},
                     Theme::kTrack.Towards(Theme::kOn, 0.25));
        painter.Fill({cell.x, cell.Bottom() - std::max(height, 2.0), cell.width, 2.0},
                     shown[i] > 0.0 ? Theme::kOn : Theme::kTrack);
        if (isPlayed)
            painter.Fill({cell.x, cell.y, cell.width, 3.0}, Theme::kPlayHead);
        painter.Text({cell.x, cell.Bottom() - 15.0, cell.width, 14.0}, actions.text(i),
                     {Theme::kSmall, Theme::kText}, Align::Centre);
    }
}

void BarEditor::Press(const PointerEvent& event) {
    const double share = (event.at.x - box.x) / box.width * static_cast<double>(shown.size());
    first = static_cast<uint32_t>(std::clamp(share, 0.0, static_cast<double>(shown.size() - 1)));
    actions.begin(first);
    Drag(event);
}

void BarEditor::Drag(const PointerEvent& event) {
    const double count = static_cast<double>(shown.size());
    const double share = (event.at.x - box.x) / box.width * count;
    const auto bar = static_cast<uint32_t>(std::clamp(share, 0.0, count - 1.0));
    actions.set(bar, std::clamp((box.Bottom() - event.at.y) / box.height, 0.0, 1.0));
}

void BarEditor::Release(const PointerEvent&) { actions.end(first); }

}  // namespace Quorvan::Ui

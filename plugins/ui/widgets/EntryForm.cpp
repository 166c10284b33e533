#include "plugins/ui/widgets/EntryForm.h"

#include <algorithm>
#include <utility>

namespace Quorvan::Ui {

namespace {

constexpr double kMargin = 12.0;
constexpr double kLabel = 18.0;
constexpr double kStep = kLabel + TextField::kHeight + 8.0;
constexpr double kProblemWidth = 280.0, kProblemLine = 15.0;
constexpr Type kProblemType{Theme::kSmall, Theme::kText};

}  // namespace

EntryForm::EntryForm(const Rect& anchor, const Rect& whole, const std::vector<EntryLine>& lines,
                     Stage::AcceptLines take)
    : Widget({}), room(whole), accept(std::move(take)) {
    const bool isPlain = lines.size() == 1 && lines[0].label.empty();
    const double margin = isPlain ? 0.0 : kMargin;
    const double width = std::max(136.0, anchor.width) + 2.0 * margin;
    const double height = isPlain ? TextField::kHeight
                                  : 2.0 * margin + kStep * static_cast<double>(lines.size()) - 8.0;
    box = {std::clamp(anchor.Centre().x - 0.5 * width, room.x, room.Right() - width),
           std::clamp(anchor.Centre().y - 0.5 * height, room.y, room.Bottom() - height), width,
           height};
    for (const EntryLine& line : lines) {
        const double y =
            isPlain ? box.y : box.y + margin + kLabel + kStep * static_cast<double>(fields.size());
        labels.push_back(line.label);
        fields.push_back(std::make_unique<TextField>(
            Rect{box.x + margin, y, width - 2.0 * margin, TextField::kHeight}, line.begun));
    }
    reach = box.Inset(-4.0);
    Choose(0);
}

void EntryForm::Choose(size_t line) {
    chosen = line;
    for (size_t i = 0; i < fields.size(); ++i)
        fields[i]->SetFocus(i == chosen);
    Invalidate();
}

void EntryForm::Draw(Painter& painter) {
    if (!labels[0].empty()) {
        painter.Round(box.Shifted(0.0, 2.0), 8.0, {0.0, 0.0, 0.0, 0.5});
        painter.Round(box, 8.0, Theme::kRaised);
        painter.RoundLine(box, 8.0, Theme::kTrack);
    }
    for (size_t i = 0; i < fields.size(); ++i) {
        const Rect& line = fields[i]->box;
        if (!labels[i].empty())
            painter.Text({line.x, line.y - kLabel, line.width, kLabel - 2.0}, labels[i],
                         {Theme::kSmall, Theme::kText});
        fields[i]->Draw(painter);
    }
    if (problem.empty())
        return;
    painter.Round(problemBox, 4.0, Theme::kAlarm.Towards(Theme::kWindow, 0.75));
    painter.Paragraph(problemBox.Inset(8.0, 6.0), problem, kProblemType, kProblemLine);
}

/// Below the lines, or above them where there is no room.
void EntryForm::Complain(std::string sentence) {
    problem = std::move(sentence);
    const double width = std::max(kProblemWidth, box.width);
    const double height = Measured([&](Painter& painter) {
        return 12.0 + painter.Paragraph({0.0, 0.0, width - 16.0, 0.0}, problem, kProblemType,
                                        kProblemLine, true);
    });
    const bool fits = box.Bottom() + 4.0 + height <= room.Bottom();
    problemBox = {std::clamp(box.x, room.x, room.Right() - width),
                  fits ? box.Bottom() + 4.0 : box.y - 4.0 - height, width, height};
    reach = reach.With(problemBox.Inset(-4.0));
}

void EntryForm::Press(const PointerEvent& event) {
    done = !box.Contains(event.at);
    for (size_t i = 0; i < fields.size(); ++i)
        if (fields[i]->box.Contains(event.at)) {
            Choose(i);
            fields[i]->Press(event);
        }
    Invalidate();
}

void EntryForm::Finish() {
    std::vector<std::string> written;
    for (const auto& field : fields)
        written.push_back(field->Written());
    std::string wrong = accept(written);
    done = wrong.empty();
    if (!done)
        Complain(std::move(wrong));
}

bool EntryForm::Key(const KeyEvent& event) {
    Invalidate();
    problem.clear();
    const size_t count = fields.size();
    if (event.key == Key::Enter)
        Finish();
    else if (event.key == Key::Escape)
        done = true;
    else if (event.key == Key::Up || (event.key == Key::Tab && event.modifiers.shift))
        Choose((chosen + count - 1) % count);
    else if (event.key == Key::Down || event.key == Key::Tab)
        Choose((chosen + 1) % count);
    else
        fields[chosen]->Key(event);
    return true;
}

bool EntryForm::Text(std::string_view signs) {
    Invalidate();
    problem.clear();
    return fields[chosen]->Text(signs);
}

}  // namespace Quorvan::Ui

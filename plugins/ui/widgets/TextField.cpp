#include "plugins/ui/widgets/TextField.h"

#include <algorithm>
#include <utility>

namespace Quorvan::Ui {

namespace {

bool Follows(char sign) { return (static_cast<unsigned char>(sign) & 0xc0u) == 0x80u; }

}  // namespace

TextField::TextField(const Rect& place, std::string begun, Accept take)
    : Widget(place), text(std::move(begun)), accept(std::move(take)) {
    caret = text.size();
    allChosen = text.size() > 1;
}

void TextField::MakeLasting(std::string itsHint) {
    lasting = true;
    hint = std::move(itsHint);
}

void TextField::Complain(std::string sentence) {
    problem = std::move(sentence);
    Invalidate();
}

size_t TextField::Before(size_t at) const {
    while (at > 0 && Follows(text[--at])) {
    }
    return at;
}

size_t TextField::Behind(size_t at) const {
    if (at < text.size())
        ++at;
    while (at < text.size() && Follows(text[at]))
        ++at;
    return at;
}

void TextField::Draw(Painter& painter) {
    const Rect line{box.x, box.y, box.width, kHeight};
    const bool active = !lasting || focused;
    painter.Round(line, 4.0, Theme::kWell);
    painter.RoundLine(line, 4.0, active ? Theme::kText : Theme::kTrack, 1.0);
    const Type type{Theme::kBody, Theme::kText};
    const Rect inner = line.Inset(8.0, 0.0);
    if (allChosen && active)
        painter.Fill({inner.x - 1.0, line.y + 5.0,
                      std::min(inner.width, painter.TextWidth(text, type)) + 2.0, kHeight - 10.0},
                     Theme::kTrack);
    painter.Text(inner, text.empty() ? hint : text,
                 {Theme::kBody, text.empty() ? Theme::kDim : Theme::kText});
    if (active) {
        const double x = inner.x + painter.TextWidth(text.substr(0, caret), type);
        painter.Fill({painter.Snap(std::min(x, inner.Right())), line.y + 5.0, 1.0, kHeight - 10.0},
                     Theme::kText);
    }
    if (!problem.empty()) {
        const Type small{Theme::kSmall, Theme::kText};
        const double height = painter.Paragraph(box.Inset(8.0), problem, small, 15.0, true);
        const Rect below{box.x, box.y + kHeight + 2.0, box.width, height + 12.0};
        painter.Round(below, 4.0, Theme::kAlarm.Towards(Theme::kWindow, 0.75));
        painter.Paragraph(below.Inset(8.0, 6.0), problem, small, 15.0);
    }
}

void TextField::Changed() {
    problem.clear();
    Invalidate();
    if (changed)
        changed(text);
}

void TextField::Finish() {
    problem = accept ? accept(text) : std::string();
    done = problem.empty() && !lasting;
    Invalidate();
}

void TextField::Press(const PointerEvent& event) {
    if (!box.Contains(event.at))
        done = !lasting;
    allChosen = false;
    caret = text.size();
    Invalidate();
}

bool TextField::Text(std::string_view signs) {
    if (allChosen)
        text.clear(), caret = 0;
    allChosen = false;
    for (const char sign : signs)
        if (static_cast<unsigned char>(sign) >= 32u && sign != 127 && text.size() < 200)
            text.insert(caret++, 1, sign);
    Changed();
    return true;
}

bool TextField::Key(const KeyEvent& event) {
    const bool wasChosen = std::exchange(allChosen, false);
    Invalidate();
    switch (event.key) {
        case Key::Enter:
            Finish();
            return true;
        case Key::Escape:
            done = true;
            return !lasting;
        case Key::Backspace:
        case Key::Delete: {
            const size_t from = wasChosen ? 0 : event.key == Key::Backspace ? Before(caret) : caret;
            const size_t to = wasChosen                     ? text.size()
                              : event.key == Key::Backspace ? caret
                                                            : Behind(caret);
            text.erase(from, to - from);
            caret = from;
            Changed();
            return true;
        }
        case Key::Left:
            caret = Before(caret);
            return true;
        case Key::Right:
            caret = Behind(caret);
            return true;
        case Key::Home:
            caret = 0;
            return true;
        case Key::End:
            caret = text.size();
            return true;
        case Key::Letter:
            return true;
        default:
            return !lasting;
    }
}

}  // namespace Quorvan::Ui

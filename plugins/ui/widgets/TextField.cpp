#include "plugins/ui/widgets/TextField.h"

#include <algorithm>
#include <utility>

namespace Quorvan::Ui {

namespace {

bool Follows(char sign) { return (static_cast<unsigned char>(sign) & 0xc0u) == 0x80u; }

}  // namespace

TextField::TextField(const Rect& place, std::string begun, std::string itsHint)
    : Widget(place), text(std::move(begun)), hint(std::move(itsHint)) {
    caret = text.size();
    allChosen = text.size() > 1;
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
    painter.Round(line, 4.0, Theme::kWell);
    painter.RoundLine(line, 4.0, focused ? Theme::kText : Theme::kTrack, 1.0);
    const Type type{Theme::kBody, Theme::kText};
    const Rect inner = line.Inset(8.0, 0.0);
    if (allChosen && focused)
        painter.Fill({inner.x - 1.0, line.y + 5.0,
                      std::min(inner.width, painter.TextWidth(text, type)) + 2.0, kHeight - 10.0},
                     Theme::kTrack);
    painter.Text(inner, text.empty() ? hint : text,
                 {Theme::kBody, text.empty() ? Theme::kDim : Theme::kText});
    if (focused) {
        const double x = inner.x + painter.TextWidth(text.substr(0, caret), type);
        painter.Fill({painter.Snap(std::min(x, inner.Right())), line.y + 5.0, 1.0, kHeight - 10.0},
                     Theme::kText);
    }
}

void TextField::Changed() {
    Invalidate();
    if (changed)
        changed(text);
}

void TextField::Press(const PointerEvent&) {
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

void TextField::Erase(bool before) {
    const size_t from = allChosen ? 0 : before ? Before(caret) : caret;
    const size_t to = allChosen ? text.size() : before ? caret : Behind(caret);
    text.erase(from, to - from);
    caret = from;
    allChosen = false;
    Changed();
}

/// What writes a sign, and Shift itself, is a key as well: none of these lets go of what is chosen.
bool TextField::Key(const KeyEvent& event) {
    Invalidate();
    switch (event.key) {
        case Key::Backspace:
        case Key::Delete:
            Erase(event.key == Key::Backspace);
            return true;
        case Key::Left:
        case Key::Home:
            caret = event.key == Key::Home ? 0 : Before(caret);
            allChosen = false;
            return true;
        case Key::Right:
        case Key::End:
            caret = event.key == Key::End ? text.size() : Behind(caret);
            allChosen = false;
            return true;
        case Key::Letter:
            allChosen |= event.letter == 'a' && event.modifiers.control && !text.empty();
            return true;
        default:
            if (event.key == Key::Enter && entered)
                entered();
            return event.key == Key::Enter;
    }
}

}  // namespace Quorvan::Ui

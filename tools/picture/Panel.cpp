#include "tools/picture/Panel.h"

namespace Quorvan::Tools {

namespace {

constexpr Canvas::Type kNumbers{13.0, false, Palette::kQuietInk};
constexpr Canvas::Type kNames{14.0, false, Palette::kInk};
constexpr Canvas::Type kTitle{16.0, true, Palette::kInk};
constexpr Canvas::Type kNote{12.0, false, Palette::kQuietInk};
constexpr double kLongMark = 6.0;  // pixels
constexpr double kShortMark = 3.0;

}  // namespace

void Panel::DrawGrid(size_t valueTicks) const {
    for (const Tick& tick : time.bars.empty() ? time.clock : time.bars)
        canvas.Line(X(tick.value), box.y, X(tick.value), box.Bottom(), Palette::kGrid);
    for (const Tick& tick : value.Ticks(valueTicks)) {
        if (!tick.label.empty())
            canvas.Line(box.x, Y(tick.value), box.Right(), Y(tick.value), Palette::kGrid);
    }
}

void Panel::DrawFrame(const std::string& title, const std::string& unit, size_t valueTicks,
                      bool isLowest) const {
    canvas.Outline(box, Palette::kFrame);
    for (const Tick& tick : value.Ticks(valueTicks)) {
        const double y = Y(tick.value);
        const double mark = tick.label.empty() ? kShortMark : kLongMark;
        canvas.Line(box.x - mark, y, box.x, y, Palette::kFrame);
        canvas.Text(box.x - 10.0, y + 4.5, tick.label, kNumbers, Canvas::Align::Right);
    }
    for (const Tick& tick : time.clock)
        canvas.Line(X(tick.value), box.Bottom(), X(tick.value), box.Bottom() + kLongMark,
                    Palette::kFrame);
    if (isLowest) {
        DrawTimeRow(time.clock, "min:s", box.Bottom() + 21.0);
        DrawTimeRow(time.bars, "bar", box.Bottom() + 41.0);
    }
    canvas.Text(box.x, box.y - 8.0, title, kTitle);
    canvas.UpwardText(box.x - 62.0, box.y + 0.5 * box.height, unit, kNames);
}

void Panel::DrawTimeRow(const std::vector<Tick>& ticks, const char* name, double y) const {
    if (ticks.empty())
        return;
    canvas.Text(box.x - 36.0, y, name, kNumbers, Canvas::Align::Right);
    for (const Tick& tick : ticks)
        canvas.Text(X(tick.value), y, tick.label, kNumbers, Canvas::Align::Centre);
}

void Panel::DrawMoment(double seconds, const std::string& note, const Colour& colour) const {
    const double x = X(seconds);
    canvas.DashedLine(x, box.y, x, box.Bottom(), colour);
    const double width = canvas.TextWidth(note, kNote);
    const bool fits = x + 6.0 + width < box.Right();
    canvas.Text(fits ? x + 5.0 : x - 5.0, box.y + 14.0, note, {kNote.size, false, colour},
                fits ? Canvas::Align::Left : Canvas::Align::Right);
}

}  // namespace Quorvan::Tools

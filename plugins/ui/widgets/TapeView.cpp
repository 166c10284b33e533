#include "plugins/ui/widgets/TapeView.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace Quorvan::Ui {

namespace {

constexpr double kFlashSeconds = 0.35;
constexpr double kMostSemitones = 36.0;
constexpr double kLow = 0.6;     ///< share of the height below which edges come first
constexpr double kGrab = 7.0;    ///< pixels around a line that take hold of it
constexpr double kNudge = 0.02;  ///< of the travel, for a notch of the wheel or an arrow

constexpr double kLaneReach = 18.0;  ///< pixels that grains of one pitch spread over

/// Grains of one pitch lie beside each other; each keeps its lane. -1..1, even over many numbers.
double LaneOf(uint64_t number) {
    const double golden = 0.6180339887498949 * static_cast<double>(number % 100000);
    return 2.0 * (golden - std::floor(golden)) - 1.0;
}

double Wrapped(double place) { return place - std::floor(place); }

}  // namespace

TapeView::TapeView(const Rect& place, Actions itsActions)
    : Widget(place), actions(std::move(itsActions)) {}

/// Small intervals get more room than large ones.
double TapeView::YOf(double semitones) const {
    const double share = std::clamp(semitones / kMostSemitones, -1.0, 1.0);
    const double bent = std::copysign(std::pow(std::abs(share), 0.62), share);
    return box.y + 0.5 * box.height - bent * (0.5 * box.height - 40.0);
}

double TapeView::YOf(const TapeGrain& grain) const {
    return YOf(grain.semitones) + kLaneReach * LaneOf(grain.number);
}

double TapeView::PlaceOf(Point at) const {
    return std::clamp((at.x - box.x) / box.width, 0.0, 1.0);
}

bool TapeView::Tick(double seconds) {
    const double before = std::exchange(now, seconds);
    const bool isOther = actions.look(picture);
    const bool hadFlashes = !flashes.empty() && before != seconds;
    if (isOther)
        NoteStarts(seconds);
    std::erase_if(flashes, [&](const Flash& flash) { return now - flash.since > kFlashSeconds; });
    return isOther || hadFlashes;
}

void TapeView::NoteStarts(double seconds) {
    const uint64_t seen = newest;
    for (const TapeGrain& grain : picture.grains) {
        newest = std::max(newest, grain.number);
        if (grain.number > seen && flashes.size() < 64)
            flashes.push_back({grain.place, grain.semitones, YOf(grain), seconds});
    }
}

void TapeView::Draw(Painter& painter) {
    painter.Round(box, 8.0, Theme::kWell);
    painter.Clip(box);
    DrawRuler(painter);
    DrawWave(painter);
    DrawMarks(painter);
    DrawSpray(painter);
    for (const TapeGrain& grain : picture.grains)
        DrawGrain(painter, grain);
    DrawFlashes(painter);
    DrawHeads(painter);
    DrawPitches(painter);
    painter.Unclip();
    const Colour line = focused ? Theme::kFocus : picture.frozen ? Theme::kFreeze : Theme::kLine;
    painter.RoundLine(box, 8.0, line, focused || picture.frozen ? 1.5 : 1.0);
}

void TapeView::DrawRuler(Painter& painter) const {
    const double step = picture.beats > 8.0 ? 1.0 : picture.beats > 1.0 ? 0.5 : 0.125;
    const auto lines = static_cast<int>(std::ceil(picture.beats / step - 0.001));
    for (int i = 1; i < lines; ++i) {
        const double beat = step * i;
        const bool isBar = std::abs(std::remainder(beat, 4.0)) < 0.001;
        const bool isBeat = std::abs(std::remainder(beat, 1.0)) < 0.001;
        const double x = painter.Snap(XOf(beat / picture.beats));
        painter.Fill({x, box.y, 1.0, box.height}, Theme::kLine.Faded(isBar    ? 1.0
                                                                     : isBeat ? 0.7
                                                                              : 0.35));
        if (isBeat && (picture.beats <= 8.0 || isBar)) {
            const int number = static_cast<int>(std::lround(beat));
            std::string name = std::to_string(number / 4 + 1);
            if (number % 4 != 0)
                name.append(".").append(std::to_string(number % 4 + 1));
            painter.Text({x + 4.0, box.y + 4.0, 32.0, 14.0}, name, {Theme::kSmall, Theme::kDim});
        }
    }
    painter.Text({box.x + 8.0, box.y + 4.0, 32.0, 14.0}, "1", {Theme::kSmall, Theme::kDim});
    for (const int octave : {-24, -12, 0, 12, 24}) {
        const double y = painter.Snap(YOf(octave));
        painter.Fill({box.x, y, box.width, 1.0}, Theme::kLine.Faded(octave == 0 ? 0.9 : 0.35));
    }
}

/// Over the wave, with a foot and a head that are seen where it is loud.
void TapeView::DrawMarks(Painter& painter) const {
    for (const double mark : picture.marks) {
        const double x = painter.Snap(XOf(mark)), middle = box.y + 0.5 * box.height;
        painter.Fill({x, middle - 48.0, 1.0, 96.0}, Theme::kText.Faded(0.35));
        for (const double y : {middle - 48.0, middle + 44.0})
            painter.Fill({x - 1.0, y, 3.0, 4.0}, Theme::kText.Faded(0.7));
    }
}

/// On plates, since waves and grains run under them.
void TapeView::DrawPitches(Painter& painter) const {
    for (const int octave : {-24, -12, 0, 12, 24}) {
        const Rect place{box.Right() - 52.0, painter.Snap(YOf(octave)) - 15.0, 44.0, 14.0};
        painter.Round(place.Inset(-3.0, 0.0), 3.0, Theme::kWell.Faded(0.85));
        painter.Text(place, std::string(octave > 0 ? "+" : "") + std::to_string(octave) + " st",
                     {Theme::kSmall, Theme::Pitch(octave).Towards(Theme::kText, 0.35)},
                     Align::Right);
    }
}

/// Ahead of the write head lies the round before, which is fainter.
void TapeView::DrawWave(Painter& painter) const {
    const size_t count = picture.highest.size();
    if (count == 0)
        return;
    cairo_t* const context = painter.Context();
    const double middle = box.y + 0.5 * box.height, half = 0.42 * box.height;
    const double width = box.width / static_cast<double>(count);
    const double border =
        picture.hasWriteHead ? picture.writePlace * static_cast<double>(count) : 1e9;
    for (const bool old : {false, true}) {
        const Colour colour =
            (picture.frozen ? Theme::kFreeze.Towards(Theme::kWave, 0.6) : Theme::kWave)
                .Faded(old ? 0.42 : 0.85);
        cairo_set_source_rgba(context, colour.red, colour.green, colour.blue, colour.alpha);
        for (size_t i = 0; i < count; ++i) {
            if ((static_cast<double>(i) >= border) != old)
                continue;
            const double high = std::min(1.0, static_cast<double>(picture.highest[i]));
            const double low = std::max(-1.0, static_cast<double>(picture.lowest[i]));
            const double top = middle - half * high;
            cairo_rectangle(context, box.x + width * static_cast<double>(i), top, width,
                            std::max(1.0, half * (high - low)));
        }
        cairo_set_antialias(context, CAIRO_ANTIALIAS_NONE);
        cairo_fill(context);
        cairo_set_antialias(context, CAIRO_ANTIALIAS_DEFAULT);
    }
}

/// From one place to another, round the end of the tape where it leads there.
void TapeView::Stretch(Painter& painter, double from, double to, double y, double height,
                       const Colour& colour) const {
    const double first = std::floor(from);
    from -= first;
    to = std::min(to - first, from + 1.0);
    painter.Fill({XOf(from), y, (std::min(to, 1.0) - from) * box.width, height}, colour);
    if (to > 1.0)
        painter.Fill({box.x, y, (to - 1.0) * box.width, height}, colour);
}

void TapeView::DrawSpray(Painter& painter) const {
    if (picture.sprayBack + picture.sprayAhead <= 0.0)
        return;
    const double from = picture.playPlace - picture.sprayBack;
    const double to = std::min(picture.playPlace + picture.sprayAhead, from + 1.0);
    const bool lit = IsEdge(held) || hovered;
    Stretch(painter, from, to, box.y, box.height, Theme::kPlayHead.Faded(lit ? 0.09 : 0.06));
    for (const Held edge : {Held::Back, Held::Ahead})
        painter.Fill({XOf(Wrapped(EdgeOf(edge))) - 1.0, box.y, 2.0, box.height},
                     Theme::kPlayHead.Faded(lit ? 0.5 : 0.28));
}

void TapeView::DrawGrain(Painter& painter, const TapeGrain& grain) const {
    const double y = painter.Snap(YOf(grain));
    const double done = grain.progress * grain.length;
    const double rest = (1.0 - grain.progress) * grain.length;
    const double from = grain.place - (grain.reversed ? rest : done);
    const double to = grain.place + (grain.reversed ? done : rest);
    const Colour colour = Theme::Pitch(grain.semitones);
    const double light = std::sqrt(std::clamp(grain.light, 0.0, 1.0));
    constexpr double kHalf = 3.0;
    for (const bool right : {false, true}) {
        const double gain = std::min(1.0, right ? grain.right : grain.left);
        const double top = right ? y + 0.5 : y - kHalf;
        Stretch(painter, from, to, top, kHalf - 0.5, colour.Faded(0.10 + 0.14 * light * gain));
        // What it has read lately glows behind the head.
        const double tail = std::min(done, 0.05);
        Stretch(painter, grain.reversed ? grain.place : grain.place - tail,
                grain.reversed ? grain.place + tail : grain.place, top, kHalf - 0.5,
                colour.Faded(0.75 * light * gain));
    }
    const Point head{XOf(Wrapped(grain.place)), y};
    const Colour bright = colour.Towards(Theme::kText, 0.25 + 0.5 * light);
    if (grain.reversed)
        painter.Arrow(head, 4.5, 0.75, bright.Faded(0.25 + 0.75 * light));
    else
        painter.Fill({head.x - 1.5, head.y - 4.0, 3.0, 8.0}, bright.Faded(0.2 + 0.8 * light));
}

void TapeView::DrawFlashes(Painter& painter) const {
    for (const Flash& flash : flashes) {
        const double age = std::clamp((now - flash.since) / kFlashSeconds, 0.0, 1.0);
        painter.Ring({XOf(Wrapped(flash.place)), flash.y}, 3.0 + 11.0 * age,
                     Theme::Pitch(flash.semitones).Towards(Theme::kText, 0.5).Faded(1.0 - age),
                     1.5);
    }
}

void TapeView::DrawHeads(Painter& painter) const {
    if (picture.hasWriteHead) {
        const double x = painter.Snap(XOf(picture.writePlace));
        const Colour colour = picture.frozen ? Theme::kFreeze : Theme::kWriteHead;
        painter.Fill({x - 1.0, box.y, 2.0, box.height}, colour.Faded(0.9));
        painter.Arrow({x, box.Bottom() - 5.0}, 6.0, 0.0, colour);
    }
    // Wholly seen at the ends of the tape too.
    const double x =
        std::clamp(painter.Snap(XOf(picture.playPlace)), box.x + 4.0, box.Right() - 4.0);
    const bool lit = picture.canDragHead && (hovered || held == Held::Head);
    painter.Fill({x - 1.0, box.y, 2.0, box.height}, Theme::kPlayHead.Faded(lit ? 1.0 : 0.85));
    painter.Arrow({x, box.y + 5.0}, lit ? 8.0 : 6.0, 0.5, Theme::kPlayHead);
    const Held edge = held != Held::Nothing ? held : hovered ? under : Held::Nothing;
    if (IsEdge(edge))
        painter.Round({XOf(Wrapped(EdgeOf(edge))) - 3.0, box.y + 0.66 * box.height, 6.0, 32.0}, 3.0,
                      Theme::kPlayHead);
    if (!picture.alive)
        painter.Text({box.x + 368.0, box.Bottom() - 28.0, 400.0, 16.0},
                     "No sound comes: the host does not run this processor.",
                     {Theme::kBody, Theme::kDim});
}

// ---- Gestures

double TapeView::EdgeOf(Held edge) const {
    return edge == Held::Back ? picture.playPlace - picture.sprayBack
                              : picture.playPlace + picture.sprayAhead;
}

double TapeView::WayTo(Point at) const {
    const double way = (at.x - box.x) / box.width - picture.playPlace;
    return way - std::round(way);
}

/// Low on the tape the band's edges come ahead of the head, which they may lie on. An edge that is
/// not used is none, and of two in one place the pointer's side is meant.
TapeView::Held TapeView::At(Point at) const {
    const bool isLow = at.y > box.y + kLow * box.height;
    const bool isHead = picture.canDragHead && std::abs(WayTo(at)) * box.width < kGrab;
    if (isHead && !isLow)
        return Held::Head;
    const bool isRight = WayTo(at) > 0.0;
    for (const Held edge : {isRight ? Held::Ahead : Held::Back, isRight ? Held::Back : Held::Ahead})
        if ((edge == Held::Back ? picture.spraysBack : picture.spraysAhead) &&
            std::abs(at.x - XOf(Wrapped(EdgeOf(edge)))) < kGrab)
            return edge;
    return isHead ? Held::Head : Held::Nothing;
}

void TapeView::Hover(Point at) {
    if (std::exchange(under, At(at)) != At(at))
        Invalidate();
}

/// Elsewhere the head comes to the pointer, where it can be moved at all.
void TapeView::Press(const PointerEvent& event) {
    held = struck = At(event.at);
    last = event.at;
    moved = 0.0;
    if (IsEdge(held))
        return actions.holdSpray(true);
    if (!picture.canDragHead)
        return;
    actions.holdHead(true);
    if (std::exchange(held, Held::Head) == Held::Nothing)
        actions.bringHead(PlaceOf(event.at));
}

void TapeView::Drag(const PointerEvent& event) {
    const double fine = event.modifiers.shift ? 0.1 : 1.0;
    const double step = fine * (event.at.x - last.x) / box.width;
    last = event.at;
    if (held == Held::Nothing || step == 0.0)
        return;
    moved += held == Held::Back ? -step : step;
    held == Held::Head ? actions.moveHead(moved) : actions.moveSpray(moved);
}

void TapeView::Release(const PointerEvent&) {
    if (held == Held::Head)
        actions.holdHead(false);
    if (IsEdge(held))
        actions.holdSpray(false);
    held = Held::Nothing;
}

/// What the first press has brought to the pointer was not meant.
void TapeView::DoubleClick(const PointerEvent& event) {
    Control* const control = struck == Held::Nothing ? nullptr : actions.control(IsEdge(struck));
    if (control != nullptr)
        control->MoveOnce(control->Default());
    else
        Press(event);
}

bool TapeView::Wheel(const WheelEvent& event) {
    Control* const control = ControlAt(event.at);
    if (control != nullptr && event.steps != 0.0)
        control->MoveOnce(control->Nudged(kNudge * event.steps, event.modifiers.shift));
    return true;
}

bool TapeView::Key(const KeyEvent& event) {
    const auto nudge = [&](bool spray, double way) {
        if (Control* const control = actions.control(spray))
            control->MoveOnce(control->Nudged(kNudge * way, event.modifiers.shift));
        return true;
    };
    switch (event.key) {
        case Ui::Key::Left:
            return nudge(false, -1.0);
        case Ui::Key::Right:
            return nudge(false, 1.0);
        case Ui::Key::Down:
            return nudge(true, -1.0);
        case Ui::Key::Up:
            return nudge(true, 1.0);
        case Ui::Key::Delete:
        case Ui::Key::Backspace:
            if (Control* const control = actions.control(false))
                control->MoveOnce(control->Default());
            return true;
        default:
            return false;
    }
}

/// The head, or else an edge of the spray.
Point TapeView::FocusPoint() const {
    if (picture.canDragHead)
        return {XOf(picture.playPlace), box.Centre().y};
    const Held edge = picture.spraysBack ? Held::Back : Held::Ahead;
    return {XOf(Wrapped(EdgeOf(edge))), box.y + (kLow + 0.1) * box.height};
}

Control* TapeView::ControlAt(Point at) {
    const Held what = At(at);
    return what == Held::Nothing ? nullptr : actions.control(IsEdge(what));
}

}  // namespace Quorvan::Ui

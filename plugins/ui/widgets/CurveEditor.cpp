#include "plugins/ui/widgets/CurveEditor.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace Quorvan::Ui {

namespace {

constexpr size_t kSteps = 240;
constexpr double kColumns = 16.0, kRows = 8.0;  ///< of the grid

}  // namespace

CurveEditor::CurveEditor(const Rect& place, const Colour& ink, Actions itsActions)
    : Widget(place), colour(ink), actions(std::move(itsActions)) {}

Point CurveEditor::ToScreen(Point p) const {
    const Rect inner = Inner();
    return {inner.x + p.x * inner.width, inner.Bottom() - p.y * inner.height};
}

Point CurveEditor::FromScreen(Point at) const {
    const Rect inner = Inner();
    return {std::clamp((at.x - inner.x) / inner.width, 0.0, 1.0),
            std::clamp((inner.Bottom() - at.y) / inner.height, 0.0, 1.0)};
}

int CurveEditor::PointAt(Point at) const {
    const std::vector<Point> points = actions.points();
    for (size_t i = 0; i < points.size(); ++i) {
        const Point p = ToScreen(points[i]);
        if (std::hypot(p.x - at.x, p.y - at.y) < 9.0)
            return static_cast<int>(i);
    }
    return kNone;
}

bool CurveEditor::Tick(double) {
    std::vector<Point> points = actions.points();
    std::vector<double> heights(kSteps + 1);
    for (size_t i = 0; i <= kSteps; ++i)
        heights[i] = actions.height(static_cast<double>(i) / kSteps);
    const double level = actions.level(), place = actions.place();
    const auto same = [](const Point& a, const Point& b) { return a.x == b.x && a.y == b.y; };
    const bool rests =
        heights == shownHeights && std::abs(level - shownLevel) < 0.002 &&
        std::abs(place - shownPlace) < 0.001 &&
        std::equal(points.begin(), points.end(), shownPoints.begin(), shownPoints.end(), same);
    if (rests)
        return false;
    shownPoints = std::move(points);
    shownHeights = std::move(heights);
    shownLevel = level;
    shownPlace = place;
    return true;
}

void CurveEditor::Draw(Painter& painter) {
    painter.Round(box, 6.0, Theme::kWell);
    const Rect inner = Inner();
    for (int i = 0; i <= 16; ++i)
        painter.Fill({painter.Snap(inner.x + inner.width * i / 16.0), inner.y, 1.0, inner.height},
                     Theme::kLine.Faded(i % 4 == 0 ? 0.9 : 0.35));
    for (int i = 0; i <= 4; ++i)
        painter.Fill({inner.x, painter.Snap(inner.y + inner.height * i / 4.0), inner.width, 1.0},
                     Theme::kLine.Faded(i % 2 == 0 ? 0.9 : 0.35));
    std::vector<Point> line;
    for (size_t i = 0; i < shownHeights.size(); ++i)
        line.push_back(ToScreen({static_cast<double>(i) / kSteps, shownHeights[i]}));
    painter.Area(line, inner.Bottom(), colour.Faded(0.12));
    painter.Path(line, colour, 2.0);
    if (shownLevel >= 0.0) {
        const double y = ToScreen({0.0, shownLevel}).y;
        painter.Fill({inner.x, y - 0.5, inner.width, 1.0}, colour.Faded(0.5));
        painter.Disc({inner.x, y}, 4.0, colour);
    }
    if (shownPlace >= 0.0) {
        const Point now = ToScreen({shownPlace, actions.height(shownPlace)});
        painter.Fill({now.x - 0.5, inner.y, 1.0, inner.height}, Theme::kText.Faded(0.35));
        painter.Disc(now, 7.0, Theme::kWell);
        painter.Disc(now, 5.0, Theme::kText);
    }
    for (size_t i = 0; i < shownPoints.size(); ++i) {
        const Point p = ToScreen(shownPoints[i]);
        painter.Disc(p, 5.5, Theme::kWell);
        painter.Disc(p, 4.0, static_cast<int>(i) == heldPoint ? Theme::kText : colour);
        if (focused && i == chosen)
            painter.Ring(p, 8.0, Theme::kFocus, 1.5);
    }
}

void CurveEditor::Press(const PointerEvent& event) {
    last = event.at;
    heldPoint = PointAt(event.at);
    heldSegment = kNone;
    if (heldPoint != kNone)
        chosen = static_cast<size_t>(heldPoint);
    else {
        const std::vector<Point> points = actions.points();
        const double x = FromScreen(event.at).x;
        for (size_t i = 0; i + 1 < points.size(); ++i)
            if (x >= points[i].x && x < points[i + 1].x)
                heldSegment = static_cast<int>(i);
    }
    open = true;
    actions.begin();
}

/// Where the pointer points, on the grid where it is held to that.
Point CurveEditor::Placed(const PointerEvent& event) const {
    const Point p = FromScreen(event.at);
    return event.modifiers.control != actions.snaps()
               ? Point{std::round(kColumns * p.x) / kColumns, std::round(kRows * p.y) / kRows}
               : p;
}

void CurveEditor::Drag(const PointerEvent& event) {
    if (heldPoint != kNone)
        actions.move(static_cast<size_t>(heldPoint), Placed(event));
    else if (heldSegment != kNone)
        actions.bend(static_cast<size_t>(heldSegment),
                     (last.y - event.at.y) / box.height * (event.modifiers.shift ? 0.1 : 1.0));
    last = event.at;
}

void CurveEditor::Release(const PointerEvent&) {
    if (std::exchange(open, false))
        actions.end();
    heldPoint = heldSegment = kNone;
}

void CurveEditor::DoubleClick(const PointerEvent& event) {
    const int at = PointAt(event.at);
    actions.begin();
    if (at == kNone)
        actions.add(Placed(event));
    else
        actions.remove(static_cast<size_t>(at));
    actions.end();
}

Point CurveEditor::FocusPoint() const {
    const std::vector<Point> points = actions.points();
    return chosen < points.size() ? ToScreen(points[chosen]) : box.Centre();
}

bool CurveEditor::Key(const KeyEvent& event) {
    const std::vector<Point> points = actions.points();
    if (points.empty())
        return false;
    chosen = std::min(chosen, points.size() - 1);
    const bool whole = event.modifiers.control || actions.snaps();
    const double step = whole ? 1.0 : event.modifiers.shift ? 0.02 : 0.2;
    const auto stepped = [&](double from, double way, double cells) {
        const double to = cells * from + step * way;
        return std::clamp((whole && way != 0.0 ? std::round(to) : to) / cells, 0.0, 1.0);
    };
    const auto once = [&](auto&& change) {
        actions.begin();
        change();
        actions.end();
        Invalidate();
        return true;
    };
    const auto move = [&](double x, double y) {
        const Point p = points[chosen];
        return once([&] {
            actions.move(chosen, {stepped(p.x, x, kColumns), stepped(p.y, y, kRows)});
        });
    };
    switch (event.key) {
        case Ui::Key::PageUp:
        case Ui::Key::PageDown:
            chosen =
                (chosen + (event.key == Ui::Key::PageUp ? points.size() - 1 : 1)) % points.size();
            Invalidate();
            return true;
        case Ui::Key::Left:
            return move(-1.0, 0.0);
        case Ui::Key::Right:
            return move(1.0, 0.0);
        case Ui::Key::Up:
            return move(0.0, 1.0);
        case Ui::Key::Down:
            return move(0.0, -1.0);
        case Ui::Key::Delete:
        case Ui::Key::Backspace:
            return once([&] { actions.remove(chosen); });
        case Ui::Key::Enter: {
            const size_t next = std::min(chosen + 1, points.size() - 1);
            const double x = 0.5 * (points[chosen].x + points[next].x);
            return once([&] { actions.add({x, actions.height(x)}); });
        }
        default:
            return false;
    }
}

bool CurveEditor::RightPress(const PointerEvent& event) {
    const int point = PointAt(event.at);
    actions.menu(event.at, point == kNone ? Actions::kNoPoint : static_cast<size_t>(point));
    return true;
}

bool CurveEditor::Wheel(const WheelEvent& event) {
    if (Control* const height = ControlAt(event.at); height != nullptr && event.steps != 0.0)
        height->MoveOnce(height->Nudged(0.02 * event.steps, event.modifiers.shift));
    return true;
}

Control* CurveEditor::ControlAt(Point at) {
    const int point = PointAt(at);
    return point == kNone ? nullptr : &actions.control(static_cast<size_t>(point));
}

}  // namespace Quorvan::Ui

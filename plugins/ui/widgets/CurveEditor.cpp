#include "plugins/ui/widgets/CurveEditor.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace Quorvan::Ui {

namespace {

constexpr size_t kSteps = 240;

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
    }
}

void CurveEditor::Press(const PointerEvent& event) {
    last = event.at;
    heldPoint = PointAt(event.at);
    heldSegment = kNone;
    if (heldPoint == kNone) {
        const std::vector<Point> points = actions.points();
        const double x = FromScreen(event.at).x;
        for (size_t i = 0; i + 1 < points.size(); ++i)
            if (x >= points[i].x && x < points[i + 1].x)
                heldSegment = static_cast<int>(i);
    }
    open = true;
    actions.begin();
}

void CurveEditor::Drag(const PointerEvent& event) {
    if (heldPoint != kNone) {
        Point p = FromScreen(event.at);
        if (event.modifiers.control)
            p = {std::round(16.0 * p.x) / 16.0, std::round(8.0 * p.y) / 8.0};
        actions.move(static_cast<size_t>(heldPoint), p);
    } else if (heldSegment != kNone)
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
        actions.add(FromScreen(event.at));
    else
        actions.remove(static_cast<size_t>(at));
    actions.end();
}

bool CurveEditor::RightPress(const PointerEvent& event) {
    actions.menu(event.at);
    return true;
}

}  // namespace Quorvan::Ui

#include "plugins/ui/model/FunctionCurve.h"

#include <cmath>

#include "modulation/CurveSegment.h"

namespace Quorvan::Ui {

namespace {

// Tensions grow fast: beyond 30 a segment hardly differs from a step.
constexpr double kMostTension = 30.0;

double BendOf(double tension) {
    return std::copysign(
        std::log1p(std::min(std::abs(tension), kMostTension)) / std::log1p(kMostTension), tension);
}

double TensionOf(double bend) {
    return std::copysign(std::expm1(std::abs(bend) * std::log1p(kMostTension)), bend);
}

}  // namespace

FunctionCurve::FunctionCurve(FaceModel& faceModel, uint32_t number) : model(faceModel) {
    const std::string prefix = std::string("Function") + std::to_string(number) + "_";
    const auto find = [&](const char* name) {
        return model.Catalog().Find(prefix + name).value_or(0);
    };
    lastPoint = find("LastActivePointIndex");
    firstX = find("PointX1");
    firstY = find("PointY1");
    firstTension = find("Tension1");
    firstRandomX = find("RandomX1");
    firstRandomY = find("RandomY1");
}

size_t FunctionCurve::Count() const {
    return static_cast<size_t>(model.Catalog().Value(lastPoint, model.Position(lastPoint))) + 1;
}

double FunctionCurve::Tension(size_t segment) const {
    const auto index = firstTension + static_cast<uint32_t>(segment);
    return model.Catalog().Value(index, model.Position(index));
}

void FunctionCurve::SetTension(size_t segment, double tension) {
    const auto index = firstTension + static_cast<uint32_t>(segment);
    model.Edit(index, model.Catalog().PositionOfValue(index, tension));
}

void FunctionCurve::SetCount(size_t count) {
    model.Edit(lastPoint,
               model.Catalog().PositionOfValue(lastPoint, static_cast<double>(count - 1)));
}

std::vector<Point> FunctionCurve::Points() const {
    std::vector<Point> points(Count());
    for (uint32_t i = 0; i < points.size(); ++i)
        points[i] = {static_cast<double>(model.Position(firstX + i)),
                     static_cast<double>(model.Position(firstY + i))};
    points.front().x = 0.0;
    points.back().x = 1.0;
    for (size_t i = 1; i < points.size(); ++i)
        points[i].x = std::max(points[i].x, points[i - 1].x);
    return points;
}

double FunctionCurve::HeightAt(double x) const {
    const std::vector<Point> points = Points();
    size_t end = 1;
    while (end < points.size() && x >= points[end].x)
        ++end;
    if (end >= points.size())
        return points.back().y;
    const Point& a = points[end - 1];
    const Point& b = points[end];
    const dsp::CurveSegment segment(static_cast<float>(a.x), static_cast<float>(a.y),
                                    static_cast<float>(b.x), static_cast<float>(b.y),
                                    static_cast<float>((b.y - a.y) / (b.x - a.x)),
                                    static_cast<float>(Tension(end - 1)));
    return static_cast<double>(segment.HeightAt(static_cast<float>(x)));
}

bool FunctionCurve::IsFlat() const {
    const std::vector<Point> points = Points();
    for (size_t i = 0; i < points.size(); ++i)
        if (points[i].y != points.front().y || Chance(i)[1] > 0.0f)
            return false;
    return true;
}

void FunctionCurve::Put(size_t point, Point to) {
    model.Edit(firstX + static_cast<uint32_t>(point), static_cast<float>(to.x));
    model.Edit(firstY + static_cast<uint32_t>(point), static_cast<float>(to.y));
}

std::array<float, 2> FunctionCurve::Chance(size_t point) const {
    const auto number = static_cast<uint32_t>(point);
    return {model.Position(firstRandomX + number), model.Position(firstRandomY + number)};
}

void FunctionCurve::SetChance(size_t point, const std::array<float, 2>& chance) {
    const auto number = static_cast<uint32_t>(point);
    model.Edit(firstRandomX + number, chance[0]);
    model.Edit(firstRandomY + number, chance[1]);
}

void FunctionCurve::Move(size_t point, Point to) {
    const std::vector<Point> points = Points();
    if (point >= points.size())
        return;
    if (point == 0 || point + 1 == points.size())
        to.x = points[point].x;
    else
        to.x = std::clamp(to.x, points[point - 1].x, points[point + 1].x);
    Put(point, to);
}

void FunctionCurve::Add(Point at) {
    const std::vector<Point> points = Points();
    if (points.size() >= kMostPoints)
        return;
    size_t place = 1;
    while (place + 1 < points.size() && at.x >= points[place].x)
        ++place;
    for (size_t i = points.size(); i > place; --i) {
        Put(i, points[i - 1]);
        SetChance(i, Chance(i - 1));
        if (i < points.size())
            SetTension(i, Tension(i - 1));
    }
    Put(place, at);
    SetChance(place, {0.0f, 0.0f});
    SetTension(place, 0.0);
    SetCount(points.size() + 1);
}

void FunctionCurve::Remove(size_t point) {
    const std::vector<Point> points = Points();
    if (point == 0 || point + 1 >= points.size() || points.size() <= 2)
        return;
    for (size_t i = point; i + 1 < points.size(); ++i) {
        Put(i, points[i + 1]);
        SetChance(i, Chance(i + 1));
        if (i + 2 < points.size())
            SetTension(i, Tension(i + 1));
    }
    SetCount(points.size() - 1);
}

void FunctionCurve::Bend(size_t segment, double by) {
    const std::vector<Point> points = Points();
    if (segment + 1 >= points.size())
        return;
    // A positive tension hangs a rising segment through and lifts a falling one.
    const double way = points[segment + 1].y >= points[segment].y ? -1.0 : 1.0;
    SetTension(segment,
               TensionOf(std::clamp(BendOf(Tension(segment)) + 2.0 * way * by, -1.0, 1.0)));
}

void FunctionCurve::Draw(const std::vector<Point>& points) {
    for (size_t i = 0; i < points.size(); ++i) {
        Put(i, points[i]);
        SetChance(i, {0.0f, 0.0f});
        if (i + 1 < points.size())
            SetTension(i, 0.0);
    }
    SetCount(points.size());
}

void FunctionCurve::CopyFrom(const FunctionCurve& other) {
    const std::vector<Point> points = other.Points();
    Draw(points);
    for (size_t i = 0; i < points.size(); ++i) {
        SetChance(i, other.Chance(i));
        if (i + 1 < points.size())
            SetTension(i, other.Tension(i));
    }
}

}  // namespace Quorvan::Ui

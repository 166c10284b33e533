#pragma once

#include <array>
#include <cstdint>
#include <vector>

#include "plugins/ui/look/Geometry.h"
#include "plugins/ui/model/FaceModel.h"

namespace Quorvan::Ui {

/// The drawn curve of one of the three functions. Begin and End go around what is one step.
class FunctionCurve {
public:
    static constexpr size_t kMostPoints = 64;

    /// number from 1.
    FunctionCurve(FaceModel& model, uint32_t number);

    std::vector<Point> Points() const;
    double HeightAt(double x) const;
    /// Whether it stands still, chance included.
    bool IsFlat() const;
    void Begin() { model.Begin(firstY); }
    void End() { model.End(firstY); }
    /// The first and the last point keep their times; the others stay between their neighbours.
    void Move(size_t point, Point to);
    void Add(Point at);
    void Remove(size_t point);
    /// Lifts the middle of a segment.
    void Bend(size_t segment, double by);
    /// Replaces all points, with straight ways between them.
    void Draw(const std::vector<Point>& points);
    void CopyFrom(const FunctionCurve& other);

private:
    size_t Count() const;
    double Tension(size_t segment) const;
    void SetTension(size_t segment, double tension);
    void SetCount(size_t count);
    void Put(size_t point, Point to);
    /// How far chance moves a point, in time and height.
    std::array<float, 2> Chance(size_t point) const;
    void SetChance(size_t point, const std::array<float, 2>& chance);

    FaceModel& model;
    uint32_t lastPoint, firstX, firstY, firstTension, firstRandomX, firstRandomY;  ///< indices
};

}  // namespace Quorvan::Ui

#pragma once

#include <string>
#include <vector>

#include "tools/picture/Axis.h"
#include "tools/picture/Canvas.h"

namespace Quorvan::Tools {

/// A line through points, and its name in the legend.
struct Curve {
    std::string name;
    std::vector<double> x, y;
};

/// What stands at an axis, and how it runs.
struct PlotAxis {
    std::string name;
    Axis axis;
};

/// One diagram of curves on a small page of its own.
class Plot {
public:
    Plot(std::string plotTitle, PlotAxis acrossAxis, PlotAxis uprightAxis)
        : title(std::move(plotTitle)),
          across(std::move(acrossAxis)),
          upright(std::move(uprightAxis)) {}

    void Add(Curve curve) { curves.push_back(std::move(curve)); }
    /// Writes the page as PNG, in place of a file that is there.
    void Save(const std::string& file) const;

private:
    void DrawAxes(Canvas& page) const;
    void DrawCurve(Canvas& page, const Curve& curve, const Colour& colour) const;
    void DrawLegend(Canvas& page) const;

    std::string title;
    PlotAxis across, upright;
    std::vector<Curve> curves;
};

}  // namespace Quorvan::Tools

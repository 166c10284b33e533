#pragma once

#include <string>
#include <vector>

#include "tools/picture/Axis.h"
#include "tools/picture/Canvas.h"

namespace Quorvan::Tools {

/// What stands at one side of a diagram, how it runs, and how many numbers it has at most.
struct Scale {
    std::string name;
    Axis axis;
    size_t ticks = 6;
};

/// Colours of curves, in their order.
Colour CurveColour(size_t number);

/// One diagram among several on a page: a frame with two scales, curves and dots in it.
class Diagram {
public:
    /// Draws grid and frame.
    Diagram(Canvas& page, const Box& area, const std::string& title, Scale across, Scale upright);

    void Curve(const std::vector<double>& x, const std::vector<double>& y, const Colour& colour,
               double width = 1.6) const;
    /// Half a disc, left or right of the point.
    void HalfDot(double x, double y, bool right, const Colour& colour, double radius = 3.5) const;
    void Note(double x, double y, const std::string& text, const Colour& colour) const;
    /// A dashed upright line with a note at its head.
    void Moment(double x, const std::string& text) const;
    /// What the colours mean, at the right of the title.
    void Key(const std::vector<std::string>& names) const;

    double X(double value) const { return box.x + box.width * horizontal.axis.Place(value); }
    double Y(double value) const { return box.Bottom() - box.height * vertical.axis.Place(value); }

private:
    Canvas& canvas;
    Box box;
    Scale horizontal, vertical;
};

}  // namespace Quorvan::Tools

#pragma once

#include <cstdint>
#include <string>

#include "tools/picture/Axis.h"
#include "tools/picture/Canvas.h"
#include "tools/picture/TimeScale.h"

namespace Quorvan::Tools {

/// Frame of one diagram: a box with a time axis and an upright axis. It draws what all diagrams
/// have in common.
class Panel {
public:
    /// across must outlive it.
    Panel(Canvas& page, const Box& place, const TimeScale& across, const Axis& upright)
        : canvas(page), box(place), time(across), value(upright) {}

    double X(double seconds) const { return box.x + box.width * time.axis.Place(seconds); }
    double Y(double level) const { return box.Bottom() - box.height * value.Place(level); }
    const Box& Area() const { return box; }
    Canvas& Page() const { return canvas; }
    const Axis& Time() const { return time.axis; }
    const Axis& Value() const { return value; }

    /// Grid, under the content.
    void DrawGrid(size_t valueTicks) const;
    /// Border, marks, numbers, and the names of the panel and of the upright axis; over the
    /// content.
    void DrawFrame(const std::string& title, const std::string& unit, size_t valueTicks,
                   bool isLowest) const;
    /// A dashed upright line with a note at its head.
    void DrawMoment(double seconds, const std::string& note, const Colour& colour) const;

private:
    void DrawTimeRow(const std::vector<Tick>& ticks, const char* name, double y) const;

    Canvas& canvas;
    Box box;
    const TimeScale& time;
    Axis value;
};

}  // namespace Quorvan::Tools

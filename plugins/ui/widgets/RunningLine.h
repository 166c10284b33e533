#pragma once

#include <algorithm>
#include <cstddef>
#include <span>
#include <vector>

#include "plugins/ui/look/Geometry.h"

namespace Quorvan::Ui {

/// The newest of a series of values, as a line that runs to the left.
class RunningLine {
public:
    /// most: how many it shows, from 2.
    explicit RunningLine(size_t most) : room(most) {}

    /// Answers whether it looks otherwise now.
    bool Take(std::span<const float> values) {
        bool moved = false;
        for (const float value : values) {
            moved |= kept.size() < room || value != kept.back() || value != kept.front();
            kept.push_back(value);
        }
        if (kept.size() > room)
            kept.erase(kept.begin(), kept.end() - static_cast<std::ptrdiff_t>(room));
        return moved;
    }
    /// Inside box, with 1 by reach above zero.
    std::vector<Point> Line(const Rect& box, double zero, double reach) const {
        std::vector<Point> line;
        for (size_t i = 0; i < kept.size(); ++i)
            line.push_back(
                {box.Right() - box.width * static_cast<double>(kept.size() - 1 - i) /
                                   static_cast<double>(room - 1),
                 std::clamp(zero - reach * static_cast<double>(kept[i]), box.y, box.Bottom())});
        return line;
    }

private:
    size_t room;
    std::vector<float> kept;
};

}  // namespace Quorvan::Ui

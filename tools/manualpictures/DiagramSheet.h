#pragma once

#include <string>

#include "tools/manualpictures/Diagram.h"
#include "tools/picture/Canvas.h"

namespace Quorvan::Tools {

/// A page of equal diagrams in rows and columns.
class DiagramSheet {
public:
    /// height: of each diagram, in pixels.
    DiagramSheet(size_t rows, size_t columns, double height);

    /// The next one, row by row.
    Diagram Add(const std::string& title, const Scale& across, const Scale& upright);
    void Save(const std::string& file) const;

    Canvas& Page() { return page; }

private:
    size_t across, next = 0;
    double tall, wide;
    Canvas page;
};

}  // namespace Quorvan::Tools

#pragma once

#include <string>

#include "tools/manualpictures/Take.h"
#include "tools/picture/Canvas.h"
#include "tools/picture/Panel.h"

namespace Quorvan::Tools {

/// A page of panels, one below the other, that show grains on the tape over the same time axis.
class TapeSheet {
public:
    /// rows: panels that there will be.
    TapeSheet(size_t rows, double seconds);

    /// Draws what happened in a take into the next panel, which can be written into afterwards.
    Panel Add(const std::string& title, const Take& take);
    void Save(const std::string& file) const;

    Canvas& Page() { return page; }

private:
    void DrawKey();

    size_t count, next = 0;
    TimeScale time;  ///< of all panels
    Canvas page;
};

}  // namespace Quorvan::Tools

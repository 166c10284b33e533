#pragma once

#include <cstdint>
#include <vector>

#include "tools/picture/Panel.h"
#include "tools/render/ModulationLog.h"

namespace Quorvan::Tools {

/// Sources of modulation over time, a line for each in a colour of its own. Where there are more
/// samples than pixels, a line fills the span between its lowest and its highest.
class ModulationPanel {
public:
    /// -1..1 where one of the sources goes below 0, else 0..1.
    static Axis Reach(const ModulationLog& log, const std::vector<uint32_t>& sources);

    ModulationPanel(const Panel& frame, const ModulationLog& samples,
                    const std::vector<uint32_t>& shown, double rate)
        : panel(frame), log(samples), sources(shown), sampleRate(rate) {}

    void Draw(const std::string& title) const;
    /// Names and colours, at the right of the panel.
    void DrawLegend(double x) const;

private:
    void DrawSource(uint32_t source) const;

    const Panel& panel;
    const ModulationLog& log;
    const std::vector<uint32_t>& sources;
    double sampleRate;
};

}  // namespace Quorvan::Tools

#include "tools/picture/ModulationPanel.h"

#include <algorithm>
#include <array>
#include <cmath>

namespace Quorvan::Tools {

namespace {

constexpr size_t kValueTicks = 4;
constexpr double kBelowZero = -0.01;  // farther than the rounding of a sample at 0
constexpr Canvas::Type kLegend{13.0, false, Palette::kInk};

/// Colours that stay apart also for eyes that mix up red and green.
constexpr std::array<Colour, 7> kColours{{{0.34, 0.36, 0.40},
                                          {0.00, 0.45, 0.70},
                                          {0.84, 0.37, 0.00},
                                          {0.00, 0.62, 0.45},
                                          {0.80, 0.47, 0.65},
                                          {0.90, 0.62, 0.00},
                                          {0.34, 0.71, 0.91}}};

}  // namespace

Axis ModulationPanel::Reach(const ModulationLog& log, const std::vector<uint32_t>& sources) {
    for (size_t sample = 0; sample < log.Samples(); ++sample) {
        for (const uint32_t source : sources) {
            if (log.Value(sample, source) < kBelowZero)
                return {-1.0, 1.0};
        }
    }
    return {0.0, 1.0};
}

void ModulationPanel::DrawSource(uint32_t source) const {
    const auto x = [&](size_t sample) {
        return panel.X(static_cast<double>(log.Frame(sample)) / sampleRate);
    };
    // Values a hair below 0 are the rounding of 0.
    const auto value = [&](size_t sample) {
        return std::max(log.Value(sample, source), panel.Value().Low());
    };
    double lastX = 0.0, lastValue = 0.0;
    for (size_t sample = 0; sample < log.Samples();) {
        const double left = x(sample);
        const double column = std::floor(left);
        const double first = value(sample);
        double lowest = first, highest = first, last = first;
        if (sample > 0)
            panel.Page().Line(lastX, panel.Y(lastValue), left, panel.Y(first), kColours[source],
                              1.6);
        for (; sample < log.Samples() && std::floor(x(sample)) == column; ++sample) {
            last = value(sample);
            lowest = std::min(lowest, last);
            highest = std::max(highest, last);
        }
        if (highest > lowest)
            panel.Page().Line(left, panel.Y(lowest), left, panel.Y(highest), kColours[source], 1.6);
        lastX = left;
        lastValue = last;
    }
}

void ModulationPanel::Draw(const std::string& title) const {
    panel.DrawGrid(kValueTicks);
    panel.Page().ClipTo(panel.Area());
    for (const uint32_t source : sources)
        DrawSource(source);
    panel.Page().ClipNothing();
    panel.DrawFrame(title, "Value", kValueTicks, false);
}

void ModulationPanel::DrawLegend(double x) const {
    double y = panel.Area().y + 14.0;
    for (const uint32_t source : sources) {
        panel.Page().Line(x, y - 4.5, x + 18.0, y - 4.5, kColours[source], 2.4);
        panel.Page().Text(x + 28.0, y, log.Name(source), kLegend);
        y += 21.0;
    }
}

}  // namespace Quorvan::Tools

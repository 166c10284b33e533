#pragma once

#include "tools/picture/Panel.h"
#include "tools/picture/Waveform.h"

namespace Quorvan::Tools {

/// Outline of a sound: for each pixel the span from its lowest to its highest sample, and darker
/// inside it the effective level.
class WaveformPanel {
public:
    /// The reach of samples that fits both outlines: a round number.
    static double ReachFor(const Waveform& a, const Waveform& b);

    WaveformPanel(const Panel& frame, const Waveform& outline, double rate, const Colour& ink)
        : panel(frame), waveform(outline), sampleRate(rate), colour(ink) {}

    void Draw(const std::string& title) const;
    /// Explains the two shades at the right of the panel.
    void DrawLegend(double x) const;

private:
    Waveform::Bin Under(double fromSeconds, double toSeconds) const;
    void DrawOutline() const;

    const Panel& panel;
    const Waveform& waveform;
    double sampleRate;
    Colour colour;
};

}  // namespace Quorvan::Tools

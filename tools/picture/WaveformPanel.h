#pragma once

#include "tools/picture/LevelScale.h"
#include "tools/picture/Panel.h"
#include "tools/picture/Waveform.h"

namespace Quorvan::Tools {

/// Outline of a sound: for each pixel the span from its lowest to its highest sample, and darker
/// inside it the effective level. In decibels both stand on the floor.
class WaveformPanel {
public:
    WaveformPanel(const Panel& frame, const Waveform& outline, double rate, const Colour& ink,
                  bool decibels)
        : panel(frame), waveform(outline), sampleRate(rate), colour(ink), inDecibels(decibels) {}

    void Draw(const std::string& title) const;
    /// Explains the two shades at the right of the panel.
    void DrawLegend(double x) const;

private:
    Waveform::Bin Under(double fromSeconds, double toSeconds) const;
    void DrawOutline() const;
    void DrawColumn(double x, const Waveform::Bin& bin) const;
    void DrawBar(double x, double low, double high, const Colour& shade) const;

    const Panel& panel;
    const Waveform& waveform;
    double sampleRate;
    Colour colour;
    bool inDecibels;
};

}  // namespace Quorvan::Tools

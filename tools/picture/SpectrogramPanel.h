#pragma once

#include "tools/picture/Panel.h"
#include "tools/picture/Spectrogram.h"

namespace Quorvan::Tools {

/// Level over time and frequency as colour.
class SpectrogramPanel {
public:
    SpectrogramPanel(const Panel& frame, const Spectrogram& levels, double rate);

    void Draw(const std::string& title) const;
    /// The colours and their levels, at the right of the panel.
    void DrawLegend(double x) const;

private:
    void DrawLevels() const;
    float LevelAt(double fromSeconds, double toSeconds, double height) const;
    double Share(double level) const { return (level - floorDb) / (topDb - floorDb); }

    const Panel& panel;
    const Spectrogram& spectrogram;
    double sampleRate;
    double topDb, floorDb;  ///< ends of the colours
};

}  // namespace Quorvan::Tools

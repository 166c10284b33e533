#pragma once

#include "tools/picture/Panel.h"
#include "tools/picture/PictureData.h"

namespace Quorvan::Tools {

/// The grains over the tape: a line for each from where and when it starts to where and when it
/// ends, in the colour of its pitch, as thick as it is loud. A half disc at its start tells its
/// side and its share of the pan. Where they are too many to be told apart, their density shows in
/// place of them. The write head runs along as a line.
class GrainPanel {
public:
    GrainPanel(const Panel& frame, const PictureData& gathered);

    void Draw(const std::string& title) const;
    /// Explains colours and marks, at the right of the panel.
    void DrawLegend(double x) const;

    /// The longest tape of the render, in seconds: the upright axis.
    static double TapeSeconds(const PictureData& data);

private:
    void DrawHead() const;
    void DrawGrains() const;
    void DrawGrain(const Host::GrainStart& grain) const;
    void DrawPath(const Host::GrainStart& grain, const Colour& colour, double width) const;
    double MarkRadius(const Host::GrainStart& grain) const;
    double DrawPitchBar(double x, double y, double height) const;
    void DrawMarkLegend(double x, double y) const;
    void DrawDensityLegend(double x, double y) const;

    const Panel& panel;
    const PictureData& data;
    bool isDense;       ///< too many to be drawn one by one
    double pitchRange;  ///< semitones, both ways
    double opacity;     ///< of one grain
    double markSize;    ///< pixels, radius of a full mark
};

}  // namespace Quorvan::Tools

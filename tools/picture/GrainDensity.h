#pragma once

#include <cstddef>
#include <vector>

#include "host/engine/GrainStart.h"
#include "tools/picture/Panel.h"

namespace Quorvan::Tools {

/// Grains that are too many to be told apart, as a map: the more of them read a place of the tape
/// at a moment, the stronger its colour, which is that of their mean pitch.
class GrainDensity {
public:
    /// pitchRange is that of the colours, in semitones.
    GrainDensity(const Panel& frame, double rate, double pitchRange);

    void Add(const Host::GrainStart& grain);
    void Draw() const;

    /// How many lines of grains cover a pixel in the mean, where anything covers it.
    static double Crowd(const std::vector<Host::GrainStart>& grains, double rate,
                        const Panel& panel);
    /// Strength 0..1 of the colour for a share of the densest place.
    static double Strength(double share);

private:
    /// What covers a pixel: the weights of all grains, and those times their pitches.
    struct Cell {
        float weight = 0.0f, pitch = 0.0f;
    };
    void AddStroke(double x0, double y0, double x1, double y1, float weight, float pitch);
    void Put(double x, double y, float weight, float pitch);
    float Densest() const;

    const Panel& panel;
    double sampleRate, range;
    size_t width, height;
    std::vector<Cell> cells;  ///< line by line
};

}  // namespace Quorvan::Tools

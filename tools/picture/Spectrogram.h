#pragma once

#include <cstdint>
#include <vector>

#include "primitives/RealFft.h"
#include "tools/render/RenderSink.h"

namespace Quorvan::Tools {

/// Power over time and logarithmic frequency of a sound of any length, in memory of a fixed size:
/// columns are joined in pairs as soon as there are too many of them.
///
/// Method  FFT of Hann windows of about 85 ms, several a window; the mean power of the channels; a
///         row takes the loudest bin in its band, or reads between two bins where it is narrower
///         than one. A full-scale sine shows as 0 dB.
class Spectrogram {
public:
    explicit Spectrogram(double rate);

    void Add(const SoundPiece& piece);
    /// Brings the columns up to the last frame.
    void Finish();

    size_t Columns() const { return columns.size(); }
    /// Level in dB; row 0 is the lowest frequency.
    float Level(size_t column, size_t row) const { return columns[column][row]; }
    size_t Rows() const { return kRows; }
    double LowestHertz() const { return kLowest; }
    double HighestHertz() const { return highest; }
    /// The time between two columns, in frames. Column n is the sound around n of these.
    uint64_t FramesPerColumn() const { return hop * joined; }

private:
    static constexpr size_t kRows = 360;
    static constexpr double kLowest = 30.0;  // hertz
    using Column = std::vector<float>;

    /// Where a row reads the power spectrum: the bins from first to last, or between them.
    struct Band {
        double from = 0.0, to = 0.0;  // bins
    };

    void MakeBands(double rate);
    void AddWindow();
    void AddPower(const std::vector<float>& ring);
    float PowerIn(const Band& band) const;
    void AddColumn(const Column& column);
    void Halve();

    double highest;       // hertz
    size_t window;        // frames
    uint64_t hop;         // frames between two windows
    uint64_t joined = 1;  // windows in a column
    uint64_t inLastColumn = 0;
    dsp::RealFft fft;
    std::vector<float> shape;  // the window function, scaled so that a full-scale sine has power 1
    std::vector<Band> bands;

    std::vector<std::vector<float>> rings;  // the last frames of each channel
    uint64_t frames = 0;
    std::vector<float> framed, bins;  // of one window
    std::vector<float> power;         // of one window, sum of the channels
    std::vector<Column> columns;
};

}  // namespace Quorvan::Tools

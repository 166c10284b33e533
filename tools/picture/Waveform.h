#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "tools/render/RenderSink.h"

namespace Quorvan::Tools {

/// The outline of a sound of any length in memory of a fixed size: it counts in bins of equal
/// length, which double as soon as there are too many of them.
class Waveform {
public:
    struct Bin {
        float lowest = 0.0f, highest = 0.0f;  ///< of all channels
        double power = 0.0;                   ///< sum of squares
        uint64_t samples = 0;                 ///< in that sum

        void Join(const Bin& other);
        float Rms() const;
    };

    void Add(const SoundPiece& piece);

    const std::vector<Bin>& Bins() const { return bins; }
    uint64_t FramesPerBin() const { return framesPerBin; }

private:
    void AddFrame(const SoundPiece& piece, size_t frame);
    void Halve();

    std::vector<Bin> bins;
    uint64_t framesPerBin = 32;
    uint64_t inLastBin = 0;  ///< frames in the last bin
};

}  // namespace Quorvan::Tools

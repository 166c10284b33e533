#pragma once

#include <cstdint>
#include <optional>
#include <vector>

#include "tools/audio/KWeighting.h"

namespace Quorvan::Tools {

/// Peak and integrated loudness of a sound of one or two channels. Method: ITU-R BS.1770 as EBU R
/// 128 gates it, over pieces of 400 ms that start every 100 ms.
class LevelMeter {
public:
    LevelMeter(double rate, uint32_t channels);

    void Add(const float* const* channels, size_t frames);

    float Peak() const { return peak; }  ///< linear, of the samples
    /// In LUFS; nothing where the sound is too short or too quiet to be measured.
    std::optional<double> Loudness() const;

private:
    void EndStep();

    uint32_t channelCount;
    size_t step;  ///< frames of 100 ms
    KWeighting weighting;
    float peak = 0.0f;
    size_t filled = 0;           ///< frames of the present step
    double energy = 0.0;         ///< of those
    std::vector<double> recent;  ///< energies of the last steps, at most three
    std::vector<double> powers;  ///< of all pieces above the absolute gate, mean squares
};

}  // namespace Quorvan::Tools

#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <vector>

namespace Quorvan::Tools {

/// Peak and, where it is wanted, integrated loudness of a sound. Method: ITU-R BS.1770 as EBU R 128
/// gates it, libebur128; it takes some 10 ns for each sample, the peak next to nothing.
class LevelMeter {
public:
    LevelMeter(double rate, uint32_t channels, bool measuresLoudness);
    ~LevelMeter();
    LevelMeter(const LevelMeter&) = delete;
    LevelMeter& operator=(const LevelMeter&) = delete;

    void Add(const float* const* channels, size_t frames);

    float Peak() const { return peak; }  ///< linear, of the samples
    /// In LUFS; nothing where the sound is too short or too quiet to be measured, or it is not
    /// wanted.
    std::optional<double> Loudness() const;

private:
    struct State;
    std::unique_ptr<State> state;  ///< of the loudness, null where that is not wanted
    uint32_t channelCount;
    std::vector<float> interleaved;
    float peak = 0.0f;
};

}  // namespace Quorvan::Tools

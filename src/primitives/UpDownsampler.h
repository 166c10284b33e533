#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <utility>
#include <vector>

namespace Quorvan::prims {

/// Runs one channel at a multiple of its rate and back: zeros between the samples, and a cascade of
/// second-order low-passes in both directions, each with a state of its own.
///
/// filterType 1 at factor 2 is the one design there is: elliptic, eight sections.
class UpDownsampler {
public:
    UpDownsampler(uint32_t rateFactor, uint32_t filter);

    /// count samples in, factor * count out; not in place.
    void Upsample(const float* in, float* out, uint32_t count);
    /// factor * count samples in, count out; in place allowed.
    void Downsample(const float* in, float* out, uint32_t count);
    /// Clears both filters.
    void Reset();

    using Two = std::array<UpDownsampler*, 2>;
    /// The same for two channels at once, with the same results in two thirds of the time. Each
    /// channel may work in place where the operation above may, and touches no buffer of the other.
    static void UpsampleTwo(const Two& resamplers, const std::array<const float*, 2>& in,
                            const std::array<float*, 2>& out, uint32_t count);
    static void DownsampleTwo(const Two& resamplers, const std::array<const float*, 2>& in,
                              const std::array<float*, 2>& out, uint32_t count);

    uint32_t factor;
    std::vector<float> scratch;  ///< one group of high-rate samples
    uint32_t sectionCount = 1;
    std::vector<float> numeratorB1;                    ///< of each section
    std::vector<std::pair<float, float>> denominator;  ///< a1, a2 of each section
    float downGain = 0.0f;                             ///< ahead of the decimation filter
    float upGain = 0.0f;                               ///< on the inserted samples
    std::vector<std::pair<float, float>> upState;      ///< z1, z2 of each section
    std::vector<std::pair<float, float>> downState;
    uint32_t filterType;

private:
    float RunCascade(float s, std::vector<std::pair<float, float>>& state) const;
    bool FitsPipeline() const;
    static bool AreAlike(const Two& resamplers);
    template <size_t kChannels>
    static void PipelineUp(const std::array<UpDownsampler*, kChannels>& resamplers,
                           const std::array<const float*, kChannels>& in,
                           const std::array<float*, kChannels>& out, uint32_t count);
    template <size_t kChannels>
    static void PipelineDown(const std::array<UpDownsampler*, kChannels>& resamplers,
                             const std::array<const float*, kChannels>& in,
                             const std::array<float*, kChannels>& out, uint32_t count);
};

}  // namespace Quorvan::prims

#pragma once

#include <array>
#include <cstdint>

#include "effects/HeadLossTable.h"
#include "primitives/Biquad.h"

namespace Quorvan::dsp {

/// Loss of the playback head of a tape echo on two channels: a cascade of five low-passes and one
/// for the head's gap, whose corners follow the delay sample by sample. Outside 60..162 ms the
/// losses stay as they are at the near end.
class HeadLoss {
public:
    static constexpr uint32_t kChunk = 16;  ///< samples of a call at most

    void Setup(float rate);
    void Clear();
    /// In place. delays: in samples, of each channel.
    void Process(const std::array<float*, 2>& samples, const std::array<const float*, 2>& delays,
                 uint32_t count);

private:
    static constexpr uint32_t kHeadStages = 5;

    /// Low-passes that belong to a delay.
    struct Filters {
        BiquadCoefficients head, gap;
    };
    /// Memory of all of them.
    struct Cascade {
        FloatLanes Tick(const StereoBiquadCoefficients& headPass,
                        const StereoBiquadCoefficients& gapPass, FloatLanes x);

        std::array<StereoBiquadState, kHeadStages> head;
        StereoBiquadState gap;
    };
    using Course = std::array<Filters, kChunk>;

    /// Whether the filters of the last sample hold for the whole call.
    bool Stays(uint32_t channel, const float* delays, uint32_t count);
    float Milliseconds(float samples) const;
    Filters FiltersAt(float ms) const;
    void FillBoth(const std::array<const float*, 2>& delays, uint32_t count);
    void Fill(uint32_t channel, const float* delays, uint32_t count);

    // Coefficients.
    const HeadLossTable& table = HeadLossTable::Get();
    float inverseSampleRate = 0.0f;
    std::array<float, 2> lastMs{};  ///< that last belongs to; 0 for none
    std::array<Filters, 2> last;    ///< of the last sample

    Cascade stages;  ///< state

    // Buffers of one call.
    std::array<Course, 2> courses;
};

}  // namespace Quorvan::dsp

#pragma once

#include <array>
#include <cstdint>

#include "primitives/AlignedVector.h"
#include "primitives/OnePole.h"

namespace Quorvan::dsp {

/// What the voices of a chorus do behind the reads of their lines, all voices and channels side by
/// side, each in a lane of its own: the recursion of the all-pass and the filters.
class ChorusLanes {
public:
    static constexpr uint32_t kLanes = 8;

    /// What a lane keeps between samples.
    struct Memory {
        float allpass = 0.0f;
        float lowPass = 0.0f;
        float highPass = 0.0f;
    };
    struct Lane {
        /// One entry a sample: ahead of Run the all-pass without its own last output, behind it
        /// what the lane gives.
        float* signal = nullptr;
        const float* glide = nullptr;  ///< coefficient of the all-pass
        Memory memory;
    };

    void Setup(uint32_t blockSize);
    /// All lanes are free.
    void Clear();
    Lane& operator[](uint32_t index) { return lanes[index]; }
    /// The first used lanes or more; null filters are off.
    void Run(uint32_t used, uint32_t count, const OnePole* lowPass, const OnePole* highPass);

private:
    template <uint32_t kVectors>
    void RunVectors(uint32_t count, const OnePole* lowPass, const OnePole* highPass);

    std::array<Lane, kLanes> lanes;
    AlignedVector silence;  ///< signal and glide of a free lane
};

}  // namespace Quorvan::dsp

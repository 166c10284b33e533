#pragma once

#include <array>
#include <cstdint>

#include "primitives/DelayLine.h"

namespace Quorvan::dsp {

/// Eight reflections a side of a stereo signal, each side with a share of the other one. The first
/// is one sample late, the others up to 89 ms at size 1.
class EarlyReflections {
public:
    static constexpr uint32_t kSides = 2, kTaps = 8;

    /// ratio: scale of the delays, 1 at 29761 Hz.
    void Setup(float newRatio);
    void Clear();
    /// Scale of all delays, up to 1.
    void SetSize(float size);
    /// The reflections' gains from the last to the first.
    void SetInverted(bool inverted);
    void Run(const float* left, const float* right, const std::array<float*, kSides>& out,
             uint32_t count);

private:
    struct Side {
        DelayLine line;
        std::array<int32_t, kTaps> taps{};  ///< samples back, at least 1
    };

    void ReadTaps(const Side& side, float* out, int32_t count) const;

    // Coefficients.
    float ratio = 1.0f;
    std::array<float, kTaps> gains{};

    // State.
    std::array<Side, kSides> sides;
};

}  // namespace Quorvan::dsp

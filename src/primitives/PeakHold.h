#pragma once

#include <array>
#include <cstdint>

#include "primitives/LevelKernels.h"

namespace Quorvan::dsp {

/// Largest size of any sample that has come on each of two sides, kept in lanes until it is asked
/// for. What is no number is passed over.
class PeakHold {
public:
    void Take(const float* left, const float* right, uint32_t count) {
        kernels.peaks(left, right, count, held.data());
    }
    /// Answers the two and begins anew.
    std::array<float, 2> Release() {
        constexpr uint32_t kHeld = LevelKernels::kHeld;
        const std::array<float, 2> peaks{kernels.size(held.data(), kHeld),
                                         kernels.size(held.data() + kHeld, kHeld)};
        held.fill(0.0f);
        return peaks;
    }

private:
    static inline const LevelKernels& kernels = LevelKernels::Best();

    alignas(64) std::array<float, 2 * LevelKernels::kHeld> held{};
};

}  // namespace Quorvan::dsp

#pragma once

#include <cstdint>

#include "primitives/AlignedVector.h"
#include "primitives/SmootherInterpLPF.h"

namespace Quorvan::dsp {

/// Dry and wet gains of a mix of 0..1, whose squares add up to 1. The mix glides in 10 ms; the
/// gains are worked out while it moves only.
class EqualPowerMix {
public:
    void Setup(float rate, uint32_t blockSize);
    /// Jumps.
    void Reset(float value);
    void SetTarget(float value) { smoother.SetTarget(value); }
    /// The gains of the next count samples.
    void Fill(uint32_t count);

    const float* DryGain() const { return dryGain.data(); }
    const float* WetGain() const { return wetGain.data(); }

private:
    void FillMoving(uint32_t count);

    // State.
    SmootherInterpLPF smoother{0.01};  // one tick a sample
    bool gainsValid = false;           ///< the gains are those of the mix that rests

    // Buffers of one block.
    AlignedVector mix, dryGain, wetGain;
};

}  // namespace Quorvan::dsp

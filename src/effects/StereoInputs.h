#pragma once

#include <array>

#include "framework/ProcessBlock.h"

namespace Quorvan::dsp {

/// The two audio inputs of an effect; a missing right one reads as the left one.
inline std::array<const float*, 2> StereoInputs(const ProcessBlock& block) {
    const float* const left = block.inputs[0];
    const float* const right = block.numInputs > 1 ? block.inputs[1] : nullptr;
    return {left, right != nullptr ? right : left};
}

}  // namespace Quorvan::dsp

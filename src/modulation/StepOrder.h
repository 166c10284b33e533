#pragma once

#include <cstdint>

namespace Quorvan::dsp {

/// Ways through the steps of a sequence.
enum StepLoop : int32_t {
    kForward = 0,
    kBackward = 1,
    kBackAndForth = 2,  ///< the ends are played twice
    kRandom = 3
};

/// Sets the step, of count, that a sequence stands at in a cycle of its clock, and whether it goes
/// down from there; a clock ahead of its origin counts below 0. Random order stays where it is.
void PlaceStep(int32_t loopMode, int32_t count, int32_t cycle, int32_t& step, uint32_t& down);

/// Moves on by one step of count; random order draws from the state.
void AdvanceStep(int32_t loopMode, int32_t count, uint32_t& randomState, int32_t& step,
                 uint32_t& down);

}  // namespace Quorvan::dsp

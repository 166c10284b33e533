#pragma once

#include <array>

#include "framework/ParameterTable.h"

namespace Quorvan::Processor {

/// Rows of the processor's own parameters, up to the flags of the destinations.
const dsp::ParameterTable& ProcessorTable();
/// The flags "Dest1_Assigned" and on.
const dsp::ParameterTable& AssignedTable();

/// Note lengths of the spatialiser's synced rates, in whole notes. From the fourth on they are 1.05
/// times the powers of two, so that the figure drifts slowly against the beat.
inline constexpr std::array<float, 9> kSpatializerNotes{8.0f,        4.0f,         2.0f,
                                                        1.0500549f,  0.52502745f,  0.26251373f,
                                                        0.13125686f, 0.065628432f, 0.032814216f};

/// A figure that the spatialiser draws.
struct Trajectory {
    float ratio;  ///< rate of Y against X; 0: Y stands still; kRandomWalk: no figure
    float phase;  ///< start phase of Y
    float invertedPhase;
};
inline constexpr float kRandomWalk = -2.0f;
inline constexpr std::array<Trajectory, 9> kTrajectories{{
    {0.0f, 0.75f, 0.75f},
    {2.0f, 0.125f, 0.625f},
    {1.0f, 0.25f, 0.75f},
    {2.0f, 0.0f, 0.5f},
    {0.5f, 0.0f, 0.25f},
    {0.6666667f, 0.0f, 0.0f},
    {1.0f, 0.0f, 0.5f},
    {8.0f, 0.0f, 0.0f},
    {kRandomWalk, 0.0f, 0.0f},
}};

/// Values of a rate type.
enum RateType : int32_t { kRateFree = 0, kRateStraight = 1, kRateTriplet = 2, kRateDotted = 3 };

}  // namespace Quorvan::Processor

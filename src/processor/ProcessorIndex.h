#pragma once

#include <cstdint>

/// Host parameter indices: flat, fixed, and part of what saved sounds refer to.
namespace Quorvan::Processor {

/// First index of each module.
namespace ModuleIndex {
inline constexpr uint32_t kMoteWeaver = 0;
inline constexpr uint32_t kEnvFollower = 158;
inline constexpr uint32_t kFunction1 = 163;
inline constexpr uint32_t kFunction2 = 507;
inline constexpr uint32_t kFunction3 = 851;
inline constexpr uint32_t kFX1 = 1195;
inline constexpr uint32_t kFX2 = 1365;
inline constexpr uint32_t kModulations = 1535;
inline constexpr uint32_t kLfoX = 2865;
inline constexpr uint32_t kLfoY = 2889;
inline constexpr uint32_t kLimiter = 2913;
inline constexpr uint32_t kStepSeq = 2931;
inline constexpr uint32_t kMasterVuL = 3013;
inline constexpr uint32_t kMasterVuR = 3014;
}  // namespace ModuleIndex

/// What every processor of this interface has.
enum CommonIndex : uint32_t {
    kBypassIndex = 3015,         ///< on from 0.5 up; fades in 10 ms to the input, undelayed
    kPanicIndex = 3016,          ///< clears all that sounds as it goes to 0.5 or above
    kPresetLoadingIndex = 3017,  ///< 1 around the restoring of parameters
    kGuiVisibleIndex = 3018,     ///< 1 while somebody looks: fills the change lists
    kOutputGainIndex = 3019      ///< -12..12 dB on the wet signal, 0 dB in a new processor
};

/// The processor's own parameters.
enum OwnIndex : uint32_t {
    kDryWet = 3020,
    kFeedback,
    kGranularVolume,
    kMasterVolume,
    kMacro1,
    kMacro2,
    kFX1Position,
    kFX1DryWet,
    kFX2Position,
    kFX2DryWet,
    kEnvelopeFollowerSource,
    kEnvelopeFollowerGain,
    kFunction1RateType,
    kFunction2RateType,
    kFunction3RateType,
    kStepSeqRateType,
    kStepSeqBipolar,
    kStepSeqScale,
    kSpatializerEnable,
    kSpatializerTrajectory,
    kSpatializerRateUnSynced,
    kSpatializerRateSynced,
    kSpatializerRateType,
    kSpatializerAmount,
    kSpatializerDistance,
    kSpatializerInvert,
    kTransportMute,
    kFeedbackBigChunk,
    kFXFeedbackChunk,
    kDirectionFeedback,
    kShapeFeedback,
    kPitchFeedback,
    kRandomPitchFeedback,
    kSizeFeedback,
    kRandomSizeFeedback,
    kDest1Assigned
};

inline constexpr uint32_t kSourceCount = 7;
inline constexpr uint32_t kDestinationCount = 95;
static_assert(kDest1Assigned == 3055);

}  // namespace Quorvan::Processor

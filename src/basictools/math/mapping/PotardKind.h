#pragma once

#include <cstdint>

/// The small integers by which a parameter names its knob curve. PotardMappingUtils turns 0 to 16
/// into curves; kStepped belongs to the parameter, which does the stepping itself.
namespace Quorvan::MappingTools::PotardKind {

inline constexpr uint32_t kRaw = 0;  ///< value and position are the same number
inline constexpr uint32_t kLinear = 1;
inline constexpr uint32_t kPolynomial = 2;
inline constexpr uint32_t kInvPolynomial = 3;
inline constexpr uint32_t kExponential = 4;
inline constexpr uint32_t kBipolarExp = 5;
inline constexpr uint32_t kBipolarPolynomial = 6;
inline constexpr uint32_t kBipolarVariableCenter = 7;
inline constexpr uint32_t kFixedExponential = 8;
inline constexpr uint32_t kEnveloppeTime = 9;
inline constexpr uint32_t kMixerTime = 10;
inline constexpr uint32_t kVuMeter = 11;
inline constexpr uint32_t kHarmonic = 12;
inline constexpr uint32_t kReverse = 13;
inline constexpr uint32_t kPiecewiseLinear = 14;
inline constexpr uint32_t kInverse = 15;
inline constexpr uint32_t kSemiToneToFreq = 16;
inline constexpr uint32_t kStepped = 18;

}  // namespace Quorvan::MappingTools::PotardKind

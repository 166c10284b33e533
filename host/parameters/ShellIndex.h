#pragma once

#include <cstdint>

#include "processor/ProcessorIndex.h"

namespace Quorvan::Host {

/// Indices that a shell itself deals with.

/// Parameters of the processor proper; the two behind them carry tool tips and hold no position.
inline constexpr uint32_t kProcessorParameters = 3150;

using Processor::kBypassIndex;
using Processor::kGuiVisibleIndex;
using Processor::kPanicIndex;
using Processor::kPresetLoadingIndex;

inline constexpr uint32_t kPitchIndex = 92;
inline constexpr uint32_t kScaleIndex = 93;
inline constexpr uint32_t kDisplayIndex = 136;  ///< binary: the record that DisplaySnapshot reads

inline constexpr uint32_t kFirstAmountIndex = 1535;  ///< of the modulation matrix
inline constexpr uint32_t kFirstActivatedIndex = 2200;
inline constexpr uint32_t kFirstAssignedIndex = 3055;  ///< "Dest1_Assigned": a source reaches it

}  // namespace Quorvan::Host

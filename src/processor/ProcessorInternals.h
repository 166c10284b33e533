#pragma once

#include <cstdint>

#include "framework/Parameter.h"
#include "processor/IProcessor.h"
#include "processor/StagePeaks.h"

namespace Quorvan::dsp {
class MoteWeaver;
}

/// Ways into a processor for shells that are linked with the library statically: pictures and texts
/// need more than the interface shows. processor must come from this program's factory. Calls come
/// between blocks.
namespace Quorvan::Processor {

dsp::MoteWeaver& GranularModuleOf(IProcessor& processor);
/// The record behind a host index; null for the cells of the modulation matrix, the boundary's own
/// parameters and indices out of range.
dsp::Parameter* ParameterRecordOf(IProcessor& processor, uint32_t index);
/// Host index of the parameter that a destination row (0 to 94) moves at present.
uint32_t TargetOfRow(IProcessor& processor, uint32_t row);
/// Present value of a modulation source (0 to 6), -1..1.
float SourceValue(IProcessor& processor, uint32_t source);
/// Position 0..1 that a destination row (0 to 94) shows: its parameter's, moved by the modulation.
float DestinationValue(IProcessor& processor, uint32_t row);
/// What the modulation adds to the row's position; 0 where none reaches it.
float DestinationOffset(IProcessor& processor, uint32_t row);
/// Where a function (0 to 2) reads its curve, 0..1.
float FunctionPhase(IProcessor& processor, uint32_t function);
/// Whether StagePeaksOf are kept, from the next block on; a little work in each block.
void WatchStages(IProcessor& processor, bool watched);
const StagePeaks& StagePeaksOf(IProcessor& processor);
/// Bytes of the processor object itself, without its buffers.
uint64_t ProcessorObjectBytes();

}  // namespace Quorvan::Processor

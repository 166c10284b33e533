#pragma once

#include <array>
#include <cstdint>

#include "framework/Parameter.h"
#include "modulation/IndexSet.h"
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
/// Present values of the modulation sources, -1..1.
std::array<float, 7> SourceValues(IProcessor& processor);
/// Position 0..1 that a destination row (0 to 94) shows: its parameter's, moved by the modulation.
float DestinationValue(IProcessor& processor, uint32_t row);
/// Rows that a modulation source reaches; all others show their parameter's own position.
dsp::IndexSet<95> ReachedDestinations(IProcessor& processor);
/// Where a function (0 to 2) reads its curve, 0..1.
float FunctionPhase(IProcessor& processor, uint32_t function);
/// The step that the step sequencer plays, from 0.
uint32_t SequencerStep(IProcessor& processor);
/// Whether stage peaks are kept, from the next block on; a little work in each block.
void WatchStages(IProcessor& processor, bool watched);
/// Those since the last call.
StagePeaks TakeStagePeaks(IProcessor& processor);
/// Bytes of the processor object itself, without its buffers.
uint64_t ProcessorObjectBytes();

}  // namespace Quorvan::Processor

#include "processor/ProcessorInternals.h"

#include "processor/DsplibProcessor.h"
#include "processor/MoteWeaverProcessor.h"

namespace Quorvan::Processor {

namespace {

MoteWeaverProcessor& EffectOf(IProcessor& processor) {
    return static_cast<DsplibProcessor<MoteWeaverProcessor>&>(processor).Effect();
}

}  // namespace

dsp::MoteWeaver& GranularModuleOf(IProcessor& processor) { return EffectOf(processor).Granular(); }

dsp::Parameter* ParameterRecordOf(IProcessor& processor, uint32_t index) {
    return EffectOf(processor).FindRecord(index);
}

uint32_t TargetOfRow(IProcessor& processor, uint32_t row) {
    return EffectOf(processor).TargetOfRow(row);
}

float SourceValue(IProcessor& processor, uint32_t source) {
    return EffectOf(processor).SourceValue(source);
}

float DestinationValue(IProcessor& processor, uint32_t row) {
    return EffectOf(processor).DestDisplayValue(row);
}

float DestinationOffset(IProcessor& processor, uint32_t row) {
    return EffectOf(processor).DestinationOffset(row);
}

float FunctionPhase(IProcessor& processor, uint32_t function) {
    return EffectOf(processor).FunctionPhase(function);
}

void WatchStages(IProcessor& processor, bool watched) { EffectOf(processor).WatchStages(watched); }

const StagePeaks& StagePeaksOf(IProcessor& processor) { return EffectOf(processor).Peaks(); }

uint64_t ProcessorObjectBytes() { return sizeof(DsplibProcessor<MoteWeaverProcessor>); }

}  // namespace Quorvan::Processor

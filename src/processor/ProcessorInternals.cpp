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

std::array<float, 7> SourceValues(IProcessor& processor) {
    MoteWeaverProcessor& effect = EffectOf(processor);
    std::array<float, 7> values{};
    for (uint32_t source = 0; source < values.size(); ++source)
        values[source] = effect.SourceValue(source);
    return values;
}

float DestinationValue(IProcessor& processor, uint32_t row) {
    return EffectOf(processor).DestDisplayValue(row);
}

dsp::IndexSet<95> ReachedDestinations(IProcessor& processor) {
    return EffectOf(processor).ReachedRows();
}

float FunctionPhase(IProcessor& processor, uint32_t function) {
    return EffectOf(processor).FunctionPhase(function);
}

uint32_t SequencerStep(IProcessor& processor) { return EffectOf(processor).SequencerStep(); }

void WatchStages(IProcessor& processor, bool watched) { EffectOf(processor).WatchStages(watched); }

StagePeaks TakeStagePeaks(IProcessor& processor) { return EffectOf(processor).TakePeaks(); }

uint64_t ProcessorObjectBytes() { return sizeof(DsplibProcessor<MoteWeaverProcessor>); }

}  // namespace Quorvan::Processor

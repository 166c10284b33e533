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

uint64_t ProcessorObjectBytes() { return sizeof(DsplibProcessor<MoteWeaverProcessor>); }

}  // namespace Quorvan::Processor

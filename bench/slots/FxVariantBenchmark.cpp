#include "slots/FxVariant.h"

#include "effects/EffectLoop.h"

// What the slot adds to the effect that runs in it; the effects themselves have rows of their own.
namespace Quorvan {
namespace {

using Processor::FxVariant;

void BM_Slot(benchmark::State& state) {
    test::EffectLoop<FxVariant> slot("FX1");
    slot.effect.SetParameterValue(FxVariant::ModuleType, static_cast<float>(state.range(0)));
    slot.effect.SetParameterValue(FxVariant::DryWetInternal, 0.5f);
    slot.Settle(1.0);
    slot.Measure(state);
}
BENCHMARK(BM_Slot)->ArgName("effect")->DenseRange(FxVariant::kPassThrough, FxVariant::kReverb);

}  // namespace
}  // namespace Quorvan

#include "effects/PitchShiftDelay.h"

#include <algorithm>
#include <utility>

#include "effects/NoteValues.h"
#include "framework/ParameterTable.h"

namespace Quorvan::dsp {

namespace {

const ParameterTable& Table() {
    using P = ParameterSpec;
    constexpr uint32_t exponential = PotardKind::kExponential;
    static const ParameterTable table = {
        P::Stepped("Stereo", 2).AtValue(1.0f),
        P::Linear("DelayTimeMs", 1.0f, 2000.0f),
        P::Stepped("DelayTimeSynced", kNoteValues.size()),
        P::Raw("Feedback"),
        P::Linear("PitchShift", -24.0f, 24.0f),
        P::Stepped("Window", 3),
        P::Curved("Spray", exponential, 0.0f, 500.0f, 3.0f),
        P::Curved("HPFreq", exponential, 20.0f, 10000.0f, 6.0f),
        P::Curved("LPFreq", exponential, 250.0f, 20000.0f, 6.0f),
        P::Raw("MidiSync"),
        P::Stepped("RateSyncedType", 3),
        P::Linear("DelayOffset", -20.0f, 20.0f),
        P::Linear("Detune", -100.0f, 100.0f),
        P::Raw("ModDelayConnected"),
        P::Raw("ModOffsetConnected"),
    };
    return table;
}

}  // namespace

PitchShiftDelay::PitchShiftDelay(std::string moduleName)
    : UnitModule(std::move(moduleName), 2, 2, Table()) {}

void PitchShiftDelay::OnSetup(float, uint32_t) {}

void PitchShiftDelay::OnReset(bool) {}

bool PitchShiftDelay::UpdateParameters(ProcessBlock&) { return true; }

bool PitchShiftDelay::OnProcess(ProcessBlock& block) {
    for (uint32_t c = 0; c < 2; ++c)
        std::copy_n(block.inputs[c], block.numFrames, block.outputs[c]);
    return true;
}

}  // namespace Quorvan::dsp

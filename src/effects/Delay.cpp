#include "effects/Delay.h"

#include <algorithm>
#include <utility>

#include "effects/NoteValues.h"
#include "framework/ParameterTable.h"

namespace Quorvan::dsp {

namespace {

const ParameterTable& Table() {
    using P = ParameterSpec;
    constexpr uint32_t exponential = PotardKind::kExponential;
    constexpr uint32_t bipolarPolynomial = PotardKind::kBipolarPolynomial;
    static const ParameterTable table = {
        P::Curved("DelayTimeMs", exponential, 2.0f, 2000.0f, 3.0f),
        P::Linear("Feedback", 0.0f, 1.0f),
        P::Linear("Wet", 0.0f, 1.0f),
        P::Curved("HPFreq", exponential, 20.0f, 10000.0f, 6.0f),
        P::Curved("LPFreq", exponential, 250.0f, 20000.0f, 6.0f),
        P::Linear("StereoWidth", 0.0f, 0.2f),
        P::Linear("StereoWidthPP", 0.0f, 1.0f),
        P::Stepped("StereoMode", 2),
        P::Stepped("MidiSync", 2),
        P::Stepped("RateSyncedType", 3),
        P::Stepped("DelayTimeSynced", kNoteValues.size()),
        P::Curved("DelayFineMs", bipolarPolynomial, -50.0f, 50.0f, 3.0f).AtValue(0.0f),
        P::Linear("VibratoMaxAmount", 0.0f, 100.0f).AtValue(100.0f),
    };
    return table;
}

}  // namespace

Delay::Delay(std::string moduleName) : UnitModule(std::move(moduleName), 10, 2, Table()) {}

void Delay::OnSetup(float, uint32_t) {}

void Delay::OnReset(bool) {}

bool Delay::UpdateParameters(ProcessBlock&) { return true; }

bool Delay::OnProcess(ProcessBlock& block) {
    for (uint32_t c = 0; c < 2; ++c)
        if (block.inputs[c] != nullptr && block.outputs[c] != nullptr)
            std::copy_n(block.inputs[c], block.numFrames, block.outputs[c]);
    return true;
}

}  // namespace Quorvan::dsp
